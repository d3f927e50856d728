#include "platform/imageio/jpeg/Decoder.h"

#include "platform/imageio/Codecs.h"
#include "tests/platform/imageio/Decoded.h"
#include "tests/platform/imageio/jpeg/JPEGRecipe.h"
#include "tests/platform/imageio/jpeg/JPEGSurgery.h"
#include "tests/support/ExifBuilder.h"
#include "tests/support/Pictures.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <jpeglib.h>

namespace kestrine::testing {

namespace {

Bytes jpegOf(const PixelBuffer& picture, const EncodingOptions& options = {.quality = 0.95}) {
    return encodeSound(jpeg::encode, picture, options);
}

Bytes smallFile(const EncodingOptions& options = {.quality = 0.7}) {
    return jpegOf(makePhoto({8, 8}), options);
}

Resolution resolutionOf(const Bytes& file) { return decodeSound(jpeg::codec, file).frame().resolution; }

/// A progressive header that claims a picture of 18000 x 18000 pixels.
Bytes hugeProgressiveFile() {
    Bytes file = jpegOf(makePhoto({16, 16}));
    file[markerPosition(file, 0xC0) + 1] = 0xC2;
    const std::size_t size = markerPosition(file, 0xC2) + 5;
    for (const std::size_t at : {size, size + 2})
        file[at] = 0x46, file[at + 1] = 0x50;
    return file;
}

/// A CMYK file of one colour.
Bytes cmykFile(std::array<std::uint8_t, 4> color, bool hasAdobeSegment) {
    jpeg_compress_struct info{};
    jpeg_error_mgr errors{};
    info.err = jpeg_std_error(&errors);
    jpeg_create_compress(&info);
    unsigned char* memory = nullptr;
    unsigned long size = 0;
    jpeg_mem_dest(&info, &memory, &size);
    info.image_width = info.image_height = 1;
    info.input_components = 4;
    info.in_color_space = JCS_CMYK;
    jpeg_set_defaults(&info);
    jpeg_set_quality(&info, 100, TRUE);
    info.write_Adobe_marker = hasAdobeSegment ? TRUE : FALSE;
    jpeg_start_compress(&info, TRUE);
    JSAMPROW row = color.data();
    jpeg_write_scanlines(&info, &row, 1);
    jpeg_finish_compress(&info);
    jpeg_destroy_compress(&info);
    Bytes file(memory, memory + size);
    std::free(memory);
    return file;
}

} // namespace

TEST(JPEGDecoder, inksAreInvertedWithAnAdobeSegmentAndWithout) {
    for (const bool hasAdobeSegment : {true, false})
        EXPECT_EQ(decodeSound(jpeg::codec, cmykFile({255, 0, 0, 255}, hasAdobeSegment)).pixels.bytes,
                  (Bytes{255, 0, 0}));
}

TEST(JPEGDecoder, reducedDecodingRoundsSidesUp) {
    const auto decoder = *jpeg::codec.open(readerOfBytes(jpegOf(makePhoto({61, 43}))));
    for (const auto& [halvings, width, height] : {std::tuple{3, 8U, 6U}, {2, 16U, 11U}, {1, 31U, 22U}}) {
        const RowSourcePointer rows = *decoder->rows(0, halvings);
        EXPECT_EQ(rows->format().width, width);
        EXPECT_EQ(rows->format().height, height);
        EXPECT_TRUE(readAllRows(*rows).ok());
    }
}

TEST(JPEGDecoder, aProfileForAnotherColourModelIsIgnored) {
    const ColorProfile profile = ColorProfile::adobeRGB();
    const Bytes file = jpegOf(makePhoto({8, 8, ColorModel::gray}), {.quality = 0.7, .profile = &profile});
    EXPECT_FALSE(decodeSound(jpeg::codec, file).frame().profile.has_value());
}

TEST(JPEGDecoder, aFileThatEndsTooEarlyIsGreyBelowTheLastStoredRow) {
    const PixelBuffer source = makePhoto({64, 640});
    Bytes file = jpegOf(source);
    file.resize(file.size() / 2);
    const PixelBuffer pixels = decodeSound(jpeg::codec, file).pixels;
    EXPECT_NEAR(sampleAt(pixels, 30, 30, 0), sampleAt(source, 30, 30, 0), 12);
    EXPECT_EQ(sampleAt(pixels, 0, 630, 0), sampleAt(pixels, 63, 639, 0));
}

TEST(JPEGDecoder, aFileCutOffAnywhereIsRefusedOrDecodedAtFullSize) {
    const Bytes whole = jpegOf(makePhoto({24, 24}));
    for (std::size_t length = 0; length < whole.size(); ++length) {
        const Result<Decoded> decoded = decode(jpeg::codec, cutAt(whole, length));
        EXPECT_TRUE(!decoded || decoded->pixels.format.height == 24) << length << " bytes";
    }
}

TEST(JPEGDecoder, aProgressivePictureThatTheFileCannotHoldIsRefused) {
    EXPECT_EQ(decode(jpeg::codec, hugeProgressiveFile()).failure().reason, Reason::tooLarge);
}

TEST(JPEGDecoder, aFileMayHaveUpTo500Scans) {
    const Bytes file = makeJPEG({.width = 16, .height = 16, .isGrey = true, .scans = 500});
    EXPECT_FALSE(failsToDecode(jpeg::codec, file));
    const Bytes excessive = makeJPEG({.width = 16, .height = 16, .isGrey = true, .scans = 501});
    EXPECT_TRUE(failsToDecode(jpeg::codec, excessive));
}

TEST(JPEGDecoder, aLargePictureMayHaveOnlyAsManyScansAsItsFileIsLongEnoughFor) {
    JPEGRecipe recipe{.width = 2400, .height = 1200, .isGrey = true, .content = Content::flat, .scans = 100};
    EXPECT_FALSE(failsToDecode(jpeg::codec, makeJPEG(recipe)));
    recipe.scans = 500;
    Bytes file = makeJPEG(recipe);
    const Result<Decoded> decoded = decode(jpeg::codec, file);
    ASSERT_FALSE(decoded.ok());
    EXPECT_EQ(decoded.failure().text, "JPEG: the file has too many scans for its length");
    file.resize(file.size() + 200'000);
    EXPECT_FALSE(failsToDecode(jpeg::codec, file));
}

TEST(JPEGDecoder, onlyTheCoefficientsOfProgressiveFilesAreHeld) {
    const auto heldBytes = [](const JPEGRecipe& recipe) {
        return decodeSound(jpeg::codec, makeJPEG(recipe)).frame().heldBytes;
    };
    EXPECT_EQ(heldBytes({.width = 32, .height = 24}), 0U);
    EXPECT_EQ(heldBytes({.width = 32, .height = 24, .isGrey = true, .isProgressive = true}), 4U * 3 * 64 * 2);
}

TEST(JPEGDecoder, theJFIFUnitIsDotsPerInchOrPerCentimetre) {
    Bytes file = smallFile({.quality = 0.7, .resolution = {300, 300}});
    EXPECT_EQ(resolutionOf(file), (Resolution{300, 300}));
    constexpr std::size_t unit = 13, aspectRatioOnly = 0, perCentimetre = 2;
    file[unit] = perCentimetre;
    EXPECT_EQ(resolutionOf(file), (Resolution{762, 762}));
    file[unit] = aspectRatioOnly;
    EXPECT_EQ(resolutionOf(file), Resolution{});
}

TEST(JPEGDecoder, exifDefinesTheResolutionIfJFIFHasNoneAndMarksAdobeRGB) {
    const Bytes exif = exifBlock({.ifd0 = {exifRationals(0x011A, {240, 1}), exifRationals(0x011B, {120, 1})},
                                  .exifSubIFD = {exifShorts(0xA001, {2})}});
    Bytes file = smallFile({.quality = 0.7, .resolution = {300, 300}, .exif = exif});
    EXPECT_EQ(resolutionOf(file), (Resolution{300, 300}));
    file[13] = 0; // JFIF has only an aspect ratio
    EXPECT_EQ(resolutionOf(file), (Resolution{240, 120}));
    EXPECT_EQ(decodeSound(jpeg::codec, file).frame().profile, ColorProfile::adobeRGB());
}

} // namespace kestrine::testing
