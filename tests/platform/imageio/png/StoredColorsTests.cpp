// What a PNG file states about its colours becomes a profile, a table of colours or a mapping to the ordinary
// range.
#include "platform/coregraphics/ToneMapping.h"
#include "platform/host/BigEndian.h"
#include "tests/platform/imageio/Decoded.h"
#include "tests/platform/imageio/png/PNGFile.h"
#include "tests/platform/imageio/png/PNGRecipe.h"
#include "tests/support/ExifBuilder.h"
#include "tests/support/Pictures.h"

namespace kestrine::testing {

namespace {

PNGFile calibratedFile(double gamma, int colorType = PNG_COLOR_TYPE_RGB) {
    PNGFile file{.colorType = colorType};
    file.before = [gamma](auto png, auto info) { png_set_gAMA(png, info, gamma); };
    return file;
}

void addStandardPrimaries(png_structp png, png_infop info) {
    png_set_cHRM(png, info, 0.3127, 0.3290, 0.64, 0.33, 0.30, 0.60, 0.15, 0.06);
}
void addWidePrimaries(png_structp png, png_infop info) {
    png_set_cHRM(png, info, 0.3127, 0.3290, 0.64, 0.33, 0.21, 0.71, 0.15, 0.06);
}

/// The content of a profile chunk: a name, and the compressed profile.
Bytes profileContent(ByteView icc) {
    Bytes content = {'x', 0, 0};
    const Bytes stream = zlibStream(icc);
    content.insert(content.end(), stream.begin(), stream.end());
    return content;
}

/// A photograph with the profile of Adobe RGB.
Bytes adobeFile() {
    const ColorProfile profile = ColorProfile::adobeRGB();
    return encodeSound(png::encode, makePhoto({8, 8}), {.profile = &profile});
}

} // namespace

TEST(PNGStoredColors, anIndexedPictureHasAColourTable) {
    const Bytes expected = {10, 20, 30, 40, 50, 60, 70, 80, 90, 250, 240, 230};
    EXPECT_EQ(decodeSound(png::codec, indexedPNG().make()).colorTable, expected);
}

TEST(PNGStoredColors, aSuggestedPaletteIsNotAColourTable) {
    PNGFile file;
    file.before = [](auto png, auto info) { png_set_PLTE(png, info, pngPalette, 4); };
    EXPECT_TRUE(decodeSound(png::codec, file.make()).colorTable.empty());
}

TEST(PNGStoredColors, adobeRGBInExifBecomesTheProfileUnlessTheFileIsMarkedAsSRGB) {
    const Bytes exif = exifBlock({.exifSubIFD = {exifShorts(0xA001, {2})}}); // the colour space
    PNGFile file;
    EXPECT_EQ(decodeSound(png::codec, withChunk(file.make(), "eXIf", exif)).frame().profile,
              ColorProfile::adobeRGB());
    file.before = [](auto png, auto info) { png_set_sRGB(png, info, PNG_sRGB_INTENT_PERCEPTUAL); };
    EXPECT_FALSE(decodeSound(png::codec, withChunk(file.make(), "eXIf", exif)).frame().profile.has_value());
}

TEST(PNGStoredColors, anUntaggedPictureAndOneMarkedAsSRGBHaveNoProfile) {
    PNGFile file;
    EXPECT_FALSE(decodeSound(png::codec, file.make()).frame().profile.has_value());
    file.before = [](auto png, auto info) { png_set_sRGB(png, info, PNG_sRGB_INTENT_PERCEPTUAL); };
    EXPECT_FALSE(decodeSound(png::codec, file.make()).frame().profile.has_value());
}

TEST(PNGStoredColors, anEmbeddedProfileIsRead) {
    EXPECT_EQ(decodeSound(png::codec, adobeFile()).frame().profile, ColorProfile::adobeRGB());
}

TEST(PNGStoredColors, codingPointsTakePrecedenceOverAProfile) {
    constexpr std::uint8_t displayP3 = 12, bt709 = 1, sRGBCurve = 13, unspecified = 2;
    const auto profileWith = [](const Bytes& points) {
        return decodeSound(png::codec, withChunk(adobeFile(), "cICP", points)).frame().profile;
    };
    EXPECT_EQ(profileWith({displayP3, sRGBCurve, 0, 1}),
              profileOf({displayP3, sRGBCurve, 0, true}, ColorModel::rgb));
    EXPECT_FALSE(profileWith({bt709, sRGBCurve, 0, 1}));
    for (const Bytes& ignored : {Bytes{unspecified, unspecified, 0, 1}, Bytes{displayP3, sRGBCurve, 1, 1},
                                 Bytes{displayP3, sRGBCurve, 0, 0}, Bytes{displayP3, sRGBCurve}})
        EXPECT_EQ(profileWith(ignored), ColorProfile::adobeRGB());
}

TEST(PNGStoredColors, anHDRPictureBecomesSDR) {
    constexpr std::uint8_t bt2020 = 9, pq = 16, hlg = 18;
    for (const std::uint8_t transfer : {pq, hlg}) {
        const Decoded decoded =
            decodeSound(png::codec, withChunk(adobeFile(), "cICP", Bytes{bt2020, transfer, 0, 1}));
        RowSourcePointer expected = rowsInSDR(rowsOfPixels(std::make_shared<PixelBuffer>(makePhoto({8, 8}))),
                                              *hdrEncodingOf({bt2020, transfer, 0, true}, 0));
        EXPECT_TRUE(samePicture(decoded.pixels, *readAllRows(*expected)));
        EXPECT_EQ(decoded.frame().profile, profileOf({bt2020, transfer, 0, true}, ColorModel::rgb));
    }
}

TEST(PNGStoredColors, theFirstOfTwoCodingPointsCounts) {
    constexpr std::uint8_t displayP3 = 12, bt2020 = 9, sRGBCurve = 13;
    const Bytes second = withChunk(adobeFile(), "cICP", Bytes{bt2020, sRGBCurve, 0, 1});
    EXPECT_EQ(
        decodeSound(png::codec, withChunk(second, "cICP", Bytes{displayP3, sRGBCurve, 0, 1})).frame().profile,
        profileOf({displayP3, sRGBCurve, 0, true}, ColorModel::rgb));
    EXPECT_EQ(decodeSound(png::codec, withChunk(second, "cICP", Bytes{displayP3})).frame().profile,
              ColorProfile::adobeRGB())
        << "even if they are not valid";
}

TEST(PNGStoredColors, theBrightestLightThatAFileStatesCounts) {
    constexpr std::uint8_t bt2020 = 9, pq = 16;
    const Bytes light = {0x02, 0x62, 0x5A, 0x00, 0, 0, 0, 0}; // 4000 cd/m2, and the average
    const Bytes file = withChunk(adobeFile(), "cICP", Bytes{bt2020, pq, 0, 1});
    RowSourcePointer expected = rowsInSDR(rowsOfPixels(std::make_shared<PixelBuffer>(makePhoto({8, 8}))),
                                          *hdrEncodingOf({bt2020, pq, 0, true}, 4000));
    const PixelBuffer pixels = *readAllRows(*expected);
    EXPECT_TRUE(samePicture(decodeSound(png::codec, withChunk(file, "cLLI", light)).pixels, pixels));
    EXPECT_FALSE(samePicture(decodeSound(png::codec, withLateChunk(file, "cLLI", light)).pixels, pixels));
}

TEST(PNGStoredColors, chunksAfterThePixelsDoNotCount) {
    constexpr std::uint8_t bt2020 = 9, pq = 16;
    const Bytes points = {bt2020, pq, 0, 1}, exif = exifBlock({.exifSubIFD = {exifShorts(0xA001, {2})}});
    const Decoded decoded = decodeSound(png::codec, withLateChunk(adobeFile(), "cICP", points));
    EXPECT_EQ(decoded.frame().profile, ColorProfile::adobeRGB());
    EXPECT_TRUE(samePicture(decoded.pixels, makePhoto({8, 8})));
    EXPECT_FALSE(
        decodeSound(png::codec, withLateChunk(PNGFile{}.make(), "eXIf", exif)).frame().profile.has_value());
}

TEST(PNGStoredColors, aBrokenProfileIsIgnored) {
    const Bytes emptyStream = {'x', 0, 0, 0x78, 0x9C, 0x03, 0, 0, 0, 0, 1};
    const Bytes file = withChunk(PNGFile{}.make(), "iCCP", emptyStream);
    EXPECT_FALSE(decodeSound(png::codec, file).frame().profile.has_value());
}

TEST(PNGStoredColors, aProfileOfAnotherColourModelIsIgnored) {
    const auto gray = ColorProfile::fromGamma(1.8, sRGBChromaticities, ColorModel::gray);
    const Bytes content = profileContent(gray->bytes());
    const Bytes ofColors = PNGFile{.colorType = PNG_COLOR_TYPE_RGB}.make();
    EXPECT_FALSE(decodeSound(png::codec, withChunk(ofColors, "iCCP", content)).frame().profile.has_value());
    const Bytes ofGray = PNGFile{.colorType = PNG_COLOR_TYPE_GRAY}.make();
    EXPECT_EQ(decodeSound(png::codec, withChunk(ofGray, "iCCP", content)).frame().profile, gray)
        << "the chunk itself is valid";
}

TEST(PNGStoredColors, aGammaBecomesAProfile) {
    const auto expected = ColorProfile::fromGamma(1 / 0.55, sRGBChromaticities, ColorModel::rgb);
    EXPECT_EQ(decodeSound(png::codec, calibratedFile(0.55).make()).frame().profile, expected);
    const auto gray = ColorProfile::fromGamma(1.0, sRGBChromaticities, ColorModel::gray);
    EXPECT_EQ(decodeSound(png::codec, calibratedFile(1.0, PNG_COLOR_TYPE_GRAY).make()).frame().profile, gray);
}

TEST(PNGStoredColors, aGammaWithinOnePercentOfSRGBsCountsAsSRGB) {
    for (const double gamma : {0.45455, 0.4502, 0.4589})
        EXPECT_FALSE(decodeSound(png::codec, calibratedFile(gamma).make()).frame().profile.has_value())
            << gamma;
    for (const double gamma : {0.4495, 0.4595})
        EXPECT_TRUE(decodeSound(png::codec, calibratedFile(gamma).make()).frame().profile.has_value())
            << gamma;
}

TEST(PNGStoredColors, primariesOtherThanSRGBsMakeAProfileEvenWithItsGamma) {
    PNGFile file = calibratedFile(0.45455);
    file.before = [](auto png, auto info) {
        png_set_gAMA(png, info, 0.45455);
        addStandardPrimaries(png, info);
    };
    EXPECT_FALSE(decodeSound(png::codec, file.make()).frame().profile.has_value());
    file.before = [](auto png, auto info) {
        png_set_gAMA(png, info, 0.45455);
        addWidePrimaries(png, info);
    };
    const Chromaticities wide{{0.3127, 0.3290}, {0.64, 0.33}, {0.21, 0.71}, {0.15, 0.06}};
    EXPECT_EQ(decodeSound(png::codec, file.make()).frame().profile,
              ColorProfile::fromGamma(1 / 0.45455, wide, ColorModel::rgb));
}

TEST(PNGStoredColors, primariesWithoutAGammaAreIgnored) {
    PNGFile file;
    file.before = addWidePrimaries;
    EXPECT_FALSE(decodeSound(png::codec, file.make()).frame().profile.has_value());
}

TEST(PNGStoredColors, aProfileIsNotLostBecausePrimariesAreInvalid) {
    Bytes primaries;
    for (const std::uint32_t value : {31270u, 32900u, 10000u, 20000u, 30000u, 60000u, 15000u, 6000u})
        appendBigEndian(primaries, value, 4);
    EXPECT_EQ(decodeSound(png::codec, withChunk(adobeFile(), "cHRM", primaries)).frame().profile,
              ColorProfile::adobeRGB());
}

} // namespace kestrine::testing
