#include "platform/imageio/Codecs.h"

#include "platform/imageio/Render.h"
#include "tests/support/ExifBuilder.h"
#include "tests/support/Pictures.h"

#include <algorithm>
#include <cmath>

namespace kestrine::jpeg {

using testing::makePhoto;
using testing::samePicture;

namespace {

PixelBuffer photo(std::uint32_t width, std::uint32_t height, ColorModel model = ColorModel::rgb) {
    return makePhoto({width, height, model, false, SampleDepth::bits8});
}

Bytes jpegOf(const PixelBuffer& pixels, const EncodingOptions& options = {.quality = 0.95}) {
    const auto rows = rowsOfPixels(std::make_shared<PixelBuffer>(pixels));
    return *jpeg::encode(*rows, options);
}

std::unique_ptr<ImageDecoder> opened(Bytes bytes) { return *openImage(readerOfBytes(std::move(bytes))); }

Result<PixelBuffer> decoded(const ImageDecoder& decoder, int eighths = 8) {
    Result<RowSourcePointer> rows = decoder.rows(0, eighths);
    return rows ? readAllRows(**rows) : Result<PixelBuffer>(rows.failure());
}

/// Position of a marker FF xx, or the end.
std::size_t markerPosition(const Bytes& jpeg, std::uint8_t marker) {
    const std::uint8_t wanted[] = {0xFF, marker};
    return static_cast<std::size_t>(std::ranges::search(jpeg, wanted).begin() - jpeg.begin());
}

/// Horizontal and vertical sampling of the first component.
std::uint8_t firstSampling(const Bytes& jpeg) { return jpeg[markerPosition(jpeg, 0xC0) + 11]; }

} // namespace

TEST(JPEG, colourAndGreyPicturesComeBackCloseToWhatWasWritten) {
    for (const ColorModel model : {ColorModel::rgb, ColorModel::gray}) {
        const PixelBuffer source = photo(61, 43, model);
        const auto decoder = opened(jpegOf(source, {.quality = 1}));
        EXPECT_EQ(decoder->frames().front().format, source.format);
        EXPECT_TRUE(samePicture(*decoded(*decoder), source, 4));
    }
}

TEST(JPEG, everySizeFromOnePixelOnIsWrittenAndRead) {
    for (std::uint32_t side = 1; side <= 18; ++side) {
        const auto decoder = opened(jpegOf(photo(side, 19 - side)));
        EXPECT_EQ(decoded(*decoder)->format.width, side);
        EXPECT_EQ(decoded(*decoder)->format.height, 19 - side);
    }
}

TEST(JPEG, reducedDecodingRoundsSidesUp) {
    const auto decoder = opened(jpegOf(photo(61, 43)));
    for (const int eighths : {1, 2, 4}) {
        const auto pixels = decoded(*decoder, eighths);
        ASSERT_TRUE(pixels.ok());
        EXPECT_EQ(pixels->format.width, static_cast<std::uint32_t>(std::ceil(61 * eighths / 8.0)));
        EXPECT_EQ(pixels->format.height, static_cast<std::uint32_t>(std::ceil(43 * eighths / 8.0)));
    }
}

TEST(JPEG, colourIsHalvedBelowNinetyPercentAndWholeFromThereOn) {
    EXPECT_EQ(firstSampling(jpegOf(photo(32, 32), {.quality = 0.89})), 0x22);
    EXPECT_EQ(firstSampling(jpegOf(photo(32, 32), {.quality = 0.895})), 0x11); // rounds to 90
    EXPECT_EQ(firstSampling(jpegOf(photo(32, 32), {.quality = 1.0})), 0x11);
}

TEST(JPEG, qualityOutsideZeroToOneIsHeldAndNaNCountsAsZero) {
    const Bytes lowest = jpegOf(photo(32, 32), {.quality = 0}),
                highest = jpegOf(photo(32, 32), {.quality = 1});
    EXPECT_EQ(jpegOf(photo(32, 32), {.quality = -3}), lowest);
    EXPECT_EQ(jpegOf(photo(32, 32), {.quality = std::nan("")}), lowest);
    EXPECT_EQ(jpegOf(photo(32, 32), {.quality = 700}), highest);
    EXPECT_LT(lowest.size(), highest.size());
}

TEST(JPEG, theHeaderIsJFIFThenExifThenTheProfile) {
    const ColorProfile profile = ColorProfile::adobeRGB();
    const Bytes exif = {'M', 'M', 0, 42, 0, 0, 0, 8, 0, 0, 0, 0, 0, 0};
    const Bytes jpeg =
        jpegOf(photo(8, 8), {.quality = 0.7, .resolution = {300, 150}, .profile = &profile, .exif = exif});
    EXPECT_EQ(markerPosition(jpeg, 0xE0), 2U);
    EXPECT_EQ(markerPosition(jpeg, 0xE1), 20U);
    EXPECT_EQ(markerPosition(jpeg, 0xE2), 20U + 4 + 6 + exif.size());
    const auto decoder = opened(jpeg);
    EXPECT_EQ(*decoder->exif(), exif);
    EXPECT_EQ(decoder->frames().front().resolution, (Resolution{300, 150}));
    EXPECT_EQ(decoder->frames().front().profile, profile);
}

TEST(JPEG, aProfileForOtherPixelsIsIgnored) {
    const ColorProfile profile = ColorProfile::adobeRGB();
    const auto decoder = opened(jpegOf(photo(8, 8, ColorModel::gray), {.quality = 0.7, .profile = &profile}));
    EXPECT_FALSE(decoder->frames().front().profile.has_value());
}

TEST(JPEG, aFileThatEndsTooEarlyIsDecodedAsFarAsItGoesAndGreyBelow) {
    const PixelBuffer source = photo(64, 640);
    Bytes jpeg = jpegOf(source);
    jpeg.resize(jpeg.size() / 2);
    const auto pixels = decoded(*opened(jpeg));
    ASSERT_TRUE(pixels.ok());
    EXPECT_NEAR(testing::sampleAt(*pixels, 30, 30, 0), testing::sampleAt(source, 30, 30, 0), 12);
    EXPECT_EQ(testing::sampleAt(*pixels, 0, 630, 0), testing::sampleAt(*pixels, 63, 639, 0));
}

TEST(JPEG, cutAnywhereItIsEitherRefusedOrDecodedToItsFullSize) {
    const Bytes whole = jpegOf(photo(24, 24));
    for (std::size_t length = 0; length < whole.size(); ++length) {
        Result<std::unique_ptr<ImageDecoder>> decoder =
            openImage(readerOfBytes({whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length)}));
        if (!decoder)
            continue;
        const auto pixels = decoded(**decoder);
        EXPECT_TRUE(!pixels || pixels->format.height == 24) << length << " bytes";
    }
}

TEST(JPEG, aProgressivePictureThatItsFileCannotHoldIsRefused) {
    Bytes jpeg = jpegOf(photo(16, 16));
    jpeg[markerPosition(jpeg, 0xC0) + 1] = 0xC2; // progressive by its header
    const std::size_t size = markerPosition(jpeg, 0xC2) + 5;
    for (const std::size_t at : {size, size + 2})
        jpeg[at] = 0x46, jpeg[at + 1] = 0x50; // 18000 pixels
    EXPECT_EQ(openImage(readerOfBytes(jpeg)).failure().reason, Reason::tooLarge);
}

TEST(JPEG, anAbsurdResolutionIsWrittenAs72) {
    for (const double dots : {1e-30, 1e30, std::nan("")})
        EXPECT_EQ(opened(jpegOf(photo(8, 8), {.quality = 0.5, .resolution = {dots, 300}}))
                      ->frames()
                      .front()
                      .resolution,
                  (Resolution{72, 300}));
}

TEST(JPEG, aSideBeyondTheFormatIsRefused) {
    const auto rows = rowsOfPixels(std::make_shared<PixelBuffer>(RowFormat{65501, 1, ColorModel::gray}));
    EXPECT_EQ(jpeg::encode(*rows, {.quality = 0.5}).failure().reason, Reason::tooLarge);
}

TEST(JPEG, aspectOnlyDensityIsNoResolutionAndExifStepsIn) {
    Bytes jpeg = jpegOf(photo(8, 8), {.quality = 0.7, .resolution = {300, 300}});
    jpeg[13] = 0; // the unit of the JFIF density
    EXPECT_EQ(opened(jpeg)->frames().front().resolution, Resolution{});
    jpeg[13] = 2; // a centimetre
    EXPECT_EQ(opened(jpeg)->frames().front().resolution, (Resolution{762, 762}));
}

} // namespace kestrine::jpeg
