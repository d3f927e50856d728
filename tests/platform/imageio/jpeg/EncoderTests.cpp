#include "platform/imageio/Codecs.h"
#include "tests/platform/imageio/Decoded.h"
#include "tests/platform/imageio/jpeg/JPEGSurgery.h"
#include "tests/support/Pictures.h"

#include <algorithm>
#include <cmath>

namespace kestrine::testing {

namespace {

PixelBuffer photo(std::uint32_t width, std::uint32_t height, ColorModel model = ColorModel::rgb) {
    return makePhoto({width, height, model});
}

Bytes jpegOf(const PixelBuffer& picture, const EncodingOptions& options = {.quality = 0.95}) {
    return encodeSound(jpeg::encode, picture, options);
}

/// Horizontal and vertical sampling factor of the first component.
int firstSampling(const Bytes& file) { return file[markerPosition(file, 0xC0) + 11]; }

/// Whether the file has the AC code for luma of the format's example tables.
bool hasStandardTables(const Bytes& file) {
    const Bytes counts = {0, 2, 1, 3, 3, 2, 4, 3, 5, 5, 4, 4, 0, 0, 1, 0x7D};
    return !std::ranges::search(file, counts).empty();
}

} // namespace

TEST(JPEGEncoder, colourAndGreyPicturesAreSimilarToTheirSource) {
    for (const ColorModel model : {ColorModel::rgb, ColorModel::gray}) {
        const PixelBuffer source = photo(61, 43, model);
        EXPECT_TRUE(samePicture(decodeSound(jpeg::codec, jpegOf(source, {.quality = 1})).pixels, source, 4));
    }
}

TEST(JPEGEncoder, everySizeIsEncoded) {
    for (std::uint32_t side = 1; side <= 18; ++side) {
        const RowFormat format = decodeSound(jpeg::codec, jpegOf(photo(side, 19 - side))).pixels.format;
        EXPECT_EQ(format.width, side);
        EXPECT_EQ(format.height, 19 - side);
    }
}

TEST(JPEGEncoder, chromaHasHalfTheResolutionBelow90Percent) {
    EXPECT_EQ(firstSampling(jpegOf(photo(32, 32), {.quality = 0.89})), 0x22);
    EXPECT_EQ(firstSampling(jpegOf(photo(32, 32), {.quality = 0.895})), 0x11); // rounded to 90
    EXPECT_EQ(firstSampling(jpegOf(photo(32, 32), {.quality = 1.0})), 0x11);
}

TEST(JPEGEncoder, theHeaderIsJFIFThenExifThenTheProfile) {
    const ColorProfile profile = ColorProfile::adobeRGB();
    const Bytes exif = {'M', 'M', 0, 42, 0, 0, 0, 8, 0, 0, 0, 0, 0, 0};
    const Bytes file =
        jpegOf(photo(8, 8), {.quality = 0.7, .resolution = {300, 150}, .profile = &profile, .exif = exif});
    EXPECT_EQ(markerPosition(file, 0xE0), 2U);
    EXPECT_EQ(markerPosition(file, 0xE1), 20U);
    EXPECT_EQ(markerPosition(file, 0xE2), 20U + 4 + 6 + exif.size());
    const Decoded decoded = decodeSound(jpeg::codec, file);
    EXPECT_EQ(decoded.exif, exif);
    EXPECT_EQ(decoded.frame().resolution, (Resolution{300, 150}));
    EXPECT_EQ(decoded.frame().profile, profile);
}

TEST(JPEGEncoder, anImplausibleResolutionIsWrittenAs72) {
    for (const double dots : {1e-30, 1e30, std::nan("")})
        EXPECT_EQ(decodeSound(jpeg::codec, jpegOf(photo(8, 8), {.quality = 0.5, .resolution = {dots, 300}}))
                      .frame()
                      .resolution,
                  (Resolution{72, 300}));
}

TEST(JPEGEncoder, aResolutionBeyondTheFormatIsWrittenAsTheLargest) {
    const Bytes file = jpegOf(photo(8, 8), {.quality = 0.5, .resolution = {100'000, 300}});
    EXPECT_EQ(decodeSound(jpeg::codec, file).frame().resolution, (Resolution{65535, 300}));
}

TEST(JPEGEncoder, onlyPicturesOver8MegapixelsHaveStandardHuffmanTables) {
    EXPECT_FALSE(hasStandardTables(jpegOf(photo(64, 64, ColorModel::gray))));
    const PixelBuffer large = PixelBuffer({4001, 2000, ColorModel::gray});
    EXPECT_TRUE(hasStandardTables(jpegOf(large)));
}

TEST(JPEGEncoder, aProgressiveFileHasTheSamePixelsAndIsMarked) {
    const PixelBuffer photo = makePhoto({120, 90});
    const Bytes baseline = encodeSound(jpeg::encode, photo, {.quality = 0.8});
    const Bytes progressive = encodeSound(jpeg::encode, photo, {.quality = 0.8, .isProgressive = true});
    EXPECT_TRUE(
        samePicture(decodeSound(jpeg::codec, progressive).pixels, decodeSound(jpeg::codec, baseline).pixels));
    const auto has = [](const Bytes& file, std::uint8_t frameMarker) {
        constexpr std::uint8_t anyMarker = 0xff;
        const Bytes start = {anyMarker, frameMarker, 0, 17, 8};
        return !std::ranges::search(file, start).empty();
    };
    EXPECT_TRUE(has(baseline, 0xc0) && !has(baseline, 0xc2));
    EXPECT_TRUE(has(progressive, 0xc2) && !has(progressive, 0xc0));
}

} // namespace kestrine::testing
