#include "platform/coregraphics/ToneCurve.h"
#include "tests/platform/imageio/Decoded.h"
#include "tests/support/Pictures.h"

#include <cmath>

namespace kestrine::testing {

namespace {

void append16(Bytes& bytes, std::uint32_t value) {
    bytes.insert(bytes.end(), {static_cast<std::uint8_t>(value), static_cast<std::uint8_t>(value >> 8)});
}
void append32(Bytes& bytes, std::uint32_t value) {
    append16(bytes, value);
    append16(bytes, value >> 16);
}

/// Makes BMP files. Fields that a test does not set are valid.
struct BMPFile {
    std::uint32_t headerLength = 40;
    std::int32_t width = 3, height = 2;
    std::uint32_t bits = 24, compression = 0, colorsUsed = 0;
    std::vector<std::uint32_t> masks = {};       ///< in the header or, if that is too short, after it
    Bytes palette = {};                          ///< as stored
    Bytes pixels = {};                           ///< as stored
    std::uint32_t colorSpace = 0x73524742;       ///< sRGB
    std::vector<std::uint32_t> calibration = {}; ///< nine coordinates and three gammas
    Bytes profile = {};                          ///< after the pixels
    std::optional<std::uint32_t> pixelOffset = {};

    Bytes make() const {
        Bytes header = makeHeader();
        header.insert(header.end(), palette.begin(), palette.end());
        Bytes file = {'B', 'M'};
        append32(file, static_cast<std::uint32_t>(14 + header.size() + pixels.size()));
        append32(file, 0);
        append32(file, pixelOffset.value_or(static_cast<std::uint32_t>(14 + header.size())));
        for (const Bytes* part : {&std::as_const(header), &pixels, &profile})
            file.insert(file.end(), part->begin(), part->end());
        return file;
    }

private:
    Bytes makeHeader() const {
        Bytes header;
        append32(header, headerLength);
        const auto appendSide = headerLength == 12 ? append16 : append32;
        appendSide(header, static_cast<std::uint32_t>(width));
        appendSide(header, static_cast<std::uint32_t>(height));
        append16(header, 1);
        append16(header, bits);
        if (headerLength == 12)
            return header;
        for (const std::uint32_t field : {compression, 0u, 2835u, 2835u, colorsUsed, 0u})
            append32(header, field);
        for (const std::uint32_t mask : masks)
            append32(header, mask);
        header.resize(std::max<std::size_t>(header.size(), headerLength <= 64 ? headerLength : 56));
        if (headerLength >= 108) {
            append32(header, colorSpace);
            for (std::size_t i = 0; i < 12; ++i)
                append32(header, calibration.empty() ? 0 : calibration[i]);
        }
        if (headerLength == 124) {
            append32(header, 4); // intent
            append32(header, static_cast<std::uint32_t>(headerLength + palette.size() + pixels.size()));
            append32(header, static_cast<std::uint32_t>(profile.size()));
            append32(header, 0);
        }
        return header;
    }
};

/// All samples of the picture, row by row from the top.
std::vector<unsigned> samplesOf(const Bytes& file) {
    const Decoded decoded = decodeSound(bmp::codec, file);
    EXPECT_EQ(decoded.frame().format, decoded.pixels.format);
    return {decoded.pixels.bytes.begin(), decoded.pixels.bytes.end()};
}

Reason reasonOf(const BMPFile& file) { return decode(bmp::codec, file.make()).failure().reason; }

using Samples = std::vector<unsigned>;

/// 3 x 2 pixels of 24 bits, the lower row first, each row with three bytes of padding.
const Bytes rows24 = {7, 8, 9, 10, 11, 12, 13, 14, 15, 99, 99, 99, 1, 2, 3, 4, 5, 6, 16, 17, 18, 99, 99, 99};
const Samples samples24 = {3, 2, 1, 6, 5, 4, 18, 17, 16, 9, 8, 7, 12, 11, 10, 15, 14, 13};

const Bytes fourColors = {30, 20, 10, 0, 60, 50, 40, 0, 90, 80, 70, 0, 9, 8, 7, 0};

/// The colours of `fourColors` as samples.
Samples colored(std::initializer_list<int> indices) {
    constexpr unsigned colors[][3] = {{10, 20, 30}, {40, 50, 60}, {70, 80, 90}, {7, 8, 9}};
    Samples samples;
    for (const int index : indices)
        samples.insert(samples.end(), std::begin(colors[index]), std::end(colors[index]));
    return samples;
}

BMPFile runLengthFile(std::uint32_t bits, const Bytes& codes) {
    return {.width = 5,
            .height = 3,
            .bits = bits,
            .compression = bits == 8 ? 1u : 2u,
            .palette = fourColors,
            .pixels = codes,
            .pixelOffset = 14 + 40 + 16};
}

constexpr std::uint32_t calibratedRGB = 0, embeddedProfile = 0x4D424544;

/// Coordinates of the primaries of sRGB, in units of 2^-30, and the same gamma three times.
std::vector<std::uint32_t> calibration(double gamma) {
    std::vector<std::uint32_t> fields;
    for (const Chromaticities::Point& p :
         {sRGBChromaticities.red, sRGBChromaticities.green, sRGBChromaticities.blue})
        for (const double coordinate : {p.x, p.y, 1 - p.x - p.y})
            fields.push_back(static_cast<std::uint32_t>(coordinate * (1 << 30)));
    fields.insert(fields.end(), 3, static_cast<std::uint32_t>(gamma * 65536));
    return fields;
}

} // namespace

TEST(BMPDecoder, everyHeaderIsRead) {
    for (const std::uint32_t length : {12u, 40u, 52u, 56u, 64u, 108u, 124u}) {
        const Decoded decoded =
            decodeSound(bmp::codec, BMPFile{.headerLength = length, .pixels = rows24}.make());
        EXPECT_EQ(decoded.pixels.format, (RowFormat{3, 2})) << length;
        EXPECT_EQ(Samples(decoded.pixels.bytes.begin(), decoded.pixels.bytes.end()), samples24) << length;
        EXPECT_EQ(decoded.frame().resolution, Resolution{}) << length;
        EXPECT_FALSE(decoded.frame().profile.has_value()) << length;
    }
}

TEST(BMPDecoder, withANegativeHeightTheUpperRowIsFirst) {
    EXPECT_EQ(samplesOf(BMPFile{.height = -2, .pixels = rows24}.make()),
              (Samples{9, 8, 7, 12, 11, 10, 15, 14, 13, 3, 2, 1, 6, 5, 4, 18, 17, 16}));
}

TEST(BMPDecoder, indicesOf1And2And4And8BitsBecomeColors) {
    EXPECT_EQ(samplesOf(BMPFile{.width = 9,
                                .height = 1,
                                .bits = 1,
                                .palette = Bytes(fourColors.begin(), fourColors.begin() + 8),
                                .pixels = {0xA5, 0x80, 0, 0}}
                            .make()),
              colored({1, 0, 1, 0, 0, 1, 0, 1, 1}));
    EXPECT_EQ(samplesOf(BMPFile{.width = 5,
                                .height = 1,
                                .bits = 2,
                                .palette = fourColors,
                                .pixels = {0b00'01'10'11, 0b10'00'00'00, 0, 0}}
                            .make()),
              colored({0, 1, 2, 3, 2}));
    EXPECT_EQ(
        samplesOf(BMPFile{
            .height = 1, .bits = 4, .colorsUsed = 4, .palette = fourColors, .pixels = {0x12, 0x30, 0, 0}}
                      .make()),
        colored({1, 2, 3}));
    EXPECT_EQ(samplesOf(BMPFile{
                  .height = 1, .bits = 8, .colorsUsed = 4, .palette = fourColors, .pixels = {3, 0, 2, 0}}
                            .make()),
              colored({3, 0, 2}));
}

TEST(BMPDecoder, coreHeadersHaveColorsOfThreeBytes) {
    EXPECT_EQ(samplesOf(BMPFile{.headerLength = 12,
                                .width = 2,
                                .height = 1,
                                .bits = 1,
                                .palette = {30, 20, 10, 60, 50, 40},
                                .pixels = {0x40, 0, 0, 0}}
                            .make()),
              colored({0, 1}));
}

TEST(BMPDecoder, theColorTableIsReported) {
    const Decoded decoded = decodeSound(
        bmp::codec,
        BMPFile{.height = 1, .bits = 8, .colorsUsed = 4, .palette = fourColors, .pixels = {3, 0, 2, 0}}
            .make());
    EXPECT_EQ(decoded.colorTable, (Bytes{10, 20, 30, 40, 50, 60, 70, 80, 90, 7, 8, 9}));
    EXPECT_TRUE(decodeSound(bmp::codec, BMPFile{.pixels = rows24}.make()).colorTable.empty());
}

TEST(BMPDecoder, palettesOfWrongLengthsAreAccepted) {
    const Bytes row = {1, 200, 2, 0};
    const Samples samples = {40, 50, 60, 0, 0, 0, 70, 80, 90};
    // More colours than fit before the pixels, no number of colours, and more colours than indices can
    // address.
    EXPECT_EQ(
        samplesOf(
            BMPFile{.height = 1, .bits = 8, .colorsUsed = 4000, .palette = fourColors, .pixels = row}.make()),
        samples);
    EXPECT_EQ(samplesOf(BMPFile{.height = 1, .bits = 8, .palette = fourColors, .pixels = row}.make()),
              samples);
    Bytes tooLong = fourColors;
    tooLong.resize(4 * 300);
    EXPECT_EQ(
        samplesOf(
            BMPFile{.height = 1, .bits = 8, .colorsUsed = 300, .palette = tooLong, .pixels = row}.make()),
        samples);
}

TEST(BMPDecoder, withoutAValidOffsetThePixelsFollowThePalette) {
    EXPECT_EQ(samplesOf(BMPFile{.height = 1,
                                .bits = 8,
                                .colorsUsed = 4,
                                .palette = fourColors,
                                .pixels = {3, 0, 2, 0},
                                .pixelOffset = 0}
                            .make()),
              colored({3, 0, 2}));
    for (const std::uint32_t insideTheHeader : {0u, 20u, 53u})
        EXPECT_EQ(samplesOf(BMPFile{.pixels = rows24, .pixelOffset = insideTheHeader}.make()), samples24);
    // Pixels of 24 bits do not use the colours, which are for screens with few colours.
    EXPECT_EQ(
        samplesOf(BMPFile{.colorsUsed = 4, .palette = fourColors, .pixels = rows24, .pixelOffset = 0}.make()),
        samples24);
}

TEST(BMPDecoder, a16BitPixelHas5BitsPerChannel) {
    EXPECT_EQ(
        samplesOf(
            BMPFile{.height = 1, .bits = 16, .pixels = {0x00, 0x7C, 0xE0, 0x83, 0x01, 0x40, 0, 0}}.make()),
        (Samples{255, 0, 0, 0, 255, 0, 132, 0, 8}));
}

TEST(BMPDecoder, a32BitPixelWithoutMasksHasNoAlpha) {
    EXPECT_EQ(
        samplesOf(BMPFile{.width = 2, .height = 1, .bits = 32, .pixels = {3, 2, 1, 0, 6, 5, 4, 128}}.make()),
        (Samples{1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(samplesOf(BMPFile{.headerLength = 108,
                                .width = 1,
                                .height = 1,
                                .bits = 32,
                                .masks = {0xFF0000, 0xFF00, 0xFF, 0xFF000000},
                                .pixels = {3, 2, 1, 0}}
                            .make()),
              (Samples{1, 2, 3}));
}

TEST(BMPDecoder, masksDefineTheChannels) {
    const BMPFile green6{.width = 2,
                         .height = 1,
                         .bits = 16,
                         .compression = 3,
                         .masks = {0xF800, 0x07E0, 0x001F},
                         .pixels = {0xE0, 0x07, 0x20, 0x80}};
    EXPECT_EQ(samplesOf(green6.make()), (Samples{0, 255, 0, 132, 4, 0}));
    const BMPFile redFirst{.width = 1,
                           .height = 1,
                           .bits = 32,
                           .compression = 3,
                           .masks = {0xFF, 0xFF00, 0xFF0000},
                           .pixels = {1, 2, 3, 4}};
    EXPECT_EQ(samplesOf(redFirst.make()), (Samples{1, 2, 3}));
    const BMPFile tenBits{.width = 1,
                          .height = 1,
                          .bits = 32,
                          .compression = 3,
                          .masks = {0x3FF00000, 0x000FFC00, 0x000003FF},
                          .pixels = {0x00, 0x02, 0xF0, 0x3F}};
    EXPECT_EQ(samplesOf(tenBits.make()), (Samples{255, 0, 128})) << "0x3FF, 0, 0x200";
    const BMPFile wide{.width = 1,
                       .height = 1,
                       .bits = 32,
                       .compression = 3,
                       .masks = {0xFFFFFFFF, 0, 1},
                       .pixels = {1, 0, 0, 0x80}};
    EXPECT_EQ(samplesOf(wide.make()), (Samples{128, 0, 255}));
}

TEST(BMPDecoder, anAlphaMaskGivesAlpha) {
    const std::vector<std::uint32_t> masks = {0xFF0000, 0xFF00, 0xFF, 0xFF000000};
    for (const std::uint32_t length : {56u, 108u, 124u})
        EXPECT_EQ(samplesOf(BMPFile{.headerLength = length,
                                    .width = 1,
                                    .height = 1,
                                    .bits = 32,
                                    .compression = 3,
                                    .masks = masks,
                                    .pixels = {3, 2, 1, 77}}
                                .make()),
                  (Samples{1, 2, 3, 77}));
    EXPECT_EQ(
        samplesOf(BMPFile{
            .width = 1, .height = 1, .bits = 32, .compression = 6, .masks = masks, .pixels = {3, 2, 1, 77}}
                      .make()),
        (Samples{1, 2, 3, 77}));
    EXPECT_EQ(samplesOf(BMPFile{.headerLength = 108,
                                .width = 2,
                                .height = 1,
                                .bits = 16,
                                .compression = 3,
                                .masks = {0x7C00, 0x3E0, 0x1F, 0x8000},
                                .pixels = {0x00, 0xFC, 0x1F, 0x00}}
                            .make()),
              (Samples{255, 0, 0, 255, 0, 0, 255, 0}));
}

TEST(BMPDecoder, invalidMasksAreRefused) {
    const std::vector<std::uint32_t> withGap = {0xF0F00000, 0xFF00, 0xFF}, none = {0, 0, 0};
    for (const auto& masks : {withGap, none})
        EXPECT_EQ(reasonOf({.bits = 32, .compression = 3, .masks = masks, .pixels = Bytes(24)}),
                  Reason::malformed);
}

TEST(BMPDecoder, runsAndLiteralsOf8BitsAreRead) {
    const Bytes codes = {3, 1, 2, 2, 0, 0,              // lower row: a run of three, a run of two
                         0, 3, 3, 2, 1, 0, 2, 3, 0, 0,  // middle: three literals and a byte of padding
                         1, 1, 0, 4, 0, 1, 2, 3, 0, 1}; // upper: four literals
    EXPECT_EQ(samplesOf(runLengthFile(8, codes).make()),
              colored({1, 0, 1, 2, 3, 3, 2, 1, 3, 3, 1, 1, 1, 2, 2}));
}

TEST(BMPDecoder, runsAndLiteralsOf4BitsAreRead) {
    const Bytes codes = {
        5, 0x12, 0,    0,              // lower: two alternating indices
        0, 5,    0x01, 0x23, 0x30, 0,  // middle: five literals, half a byte and a byte of padding
        0, 0,                          //
        4, 0x33, 1,    0x10, 0,    1}; // upper
    EXPECT_EQ(samplesOf(runLengthFile(4, codes).make()),
              colored({3, 3, 3, 3, 1, 0, 1, 2, 3, 3, 1, 2, 1, 2, 1}));
}

TEST(BMPDecoder, pixelsThatRunLengthCodesSkipHaveTheFirstColor) {
    const Bytes jump = {1, 1, 0, 2, 2,
                        1, 1, 2, 0, 1}; // one pixel, two to the right and one up, one pixel, the end
    EXPECT_EQ(samplesOf(runLengthFile(8, jump).make()),
              colored({0, 0, 0, 0, 0, 0, 0, 0, 2, 0, 1, 0, 0, 0, 0}));
    const Bytes within = {1, 1, 0, 2, 2, 0, 1, 2, 0, 1};
    EXPECT_EQ(samplesOf(runLengthFile(8, within).make()),
              colored({0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 0, 0, 2, 0}));
    const Bytes nothing = {0, 1};
    EXPECT_EQ(samplesOf(runLengthFile(4, nothing).make()),
              colored({0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
}

TEST(BMPDecoder, runsPastTheRowAndThePictureAreClipped) {
    const Bytes codes = {200, 1, 0, 0, 5, 2, 9, 3, 0, 0, 5, 3, 0, 0, 5, 1, 0, 2, 255, 255, 5, 1, 0, 1};
    EXPECT_EQ(samplesOf(runLengthFile(8, codes).make()),
              colored({3, 3, 3, 3, 3, 2, 2, 2, 2, 2, 1, 1, 1, 1, 1}));
}

TEST(BMPDecoder, runLengthRowsCanBeFarApart) {
    Bytes codes;
    constexpr int side = 300;
    for (int row = 0; row < side; ++row) {
        for (int x = 0; x < side; ++x)
            codes.insert(codes.end(), {1, static_cast<std::uint8_t>((x * row + x) % 4)});
        codes.insert(codes.end(), {0, 0});
    }
    BMPFile file = runLengthFile(8, codes);
    file.width = file.height = side;
    const Decoded decoded = decodeSound(bmp::codec, file.make());
    for (std::uint32_t y = 0; y < side; ++y)
        for (std::uint32_t x = 0; x < side; ++x)
            ASSERT_EQ(sampleAt(decoded.pixels, x, y, 0),
                      colored({static_cast<int>(x * (side - 1 - y) + x) % 4})[0]);
}

TEST(BMPDecoder, missingMarksAtTheEndAreAccepted) {
    const Bytes codes = {5, 1, 0, 0, 5, 2, 0, 0, 5, 3};
    EXPECT_EQ(samplesOf(runLengthFile(8, codes).make()),
              colored({3, 3, 3, 3, 3, 2, 2, 2, 2, 2, 1, 1, 1, 1, 1}));
}

TEST(BMPDecoder, aFileThatEndsTooEarlyIsRefused) {
    const Bytes codes = {5, 1, 0, 0, 0, 3, 1, 2, 3, 0, 0, 0, 0, 2, 1, 0, 1, 3, 0, 1};
    const BMPFile files[] = {
        {.pixels = Bytes(rows24.begin(), rows24.end() - 3)},
        {.headerLength = 12, .height = 1, .bits = 8, .palette = Bytes(768), .pixels = {1, 2, 3}},
        {.height = -2, .bits = 32, .compression = 3, .masks = {0xFF, 0xFF00, 0xFF0000}, .pixels = Bytes(24)},
        runLengthFile(8, codes),
        runLengthFile(4, codes),
    };
    for (const BMPFile& recipe : files) {
        const Bytes file = recipe.make();
        EXPECT_FALSE(failsToDecode(bmp::codec, file));
        for (std::size_t length = 0; length < file.size(); ++length)
            EXPECT_TRUE(failsToDecode(
                bmp::codec, Bytes(file.begin(), file.begin() + static_cast<std::ptrdiff_t>(length))))
                << length << " of " << file.size();
    }
}

TEST(BMPDecoder, impossibleSizesAreRefused) {
    EXPECT_EQ(reasonOf({.width = 0}), Reason::empty);
    EXPECT_EQ(reasonOf({.height = 0}), Reason::empty);
    EXPECT_EQ(reasonOf({.width = -1}), Reason::malformed);
    EXPECT_EQ(reasonOf({.width = 1'000'001}), Reason::tooLarge);
    EXPECT_EQ(reasonOf({.height = INT32_MIN}), Reason::tooLarge);
    EXPECT_EQ(reasonOf({.width = 1'000'000, .height = -1'000'000}), Reason::tooLarge);
}

TEST(BMPDecoder, unknownKindsAreRefused) {
    EXPECT_EQ(reasonOf({.bits = 5}), Reason::unsupported);
    EXPECT_EQ(reasonOf({.bits = 0, .compression = 4}), Reason::unsupported) << "embedded JPEG";
    EXPECT_EQ(reasonOf({.bits = 8, .compression = 2}), Reason::unsupported) << "4-bit runs of 8 bits";
    EXPECT_EQ(reasonOf({.bits = 24, .compression = 3, .pixels = Bytes(24)}), Reason::unsupported);
    EXPECT_EQ(reasonOf({.headerLength = 64, .bits = 16, .compression = 3}), Reason::unsupported) << "Huffman";
}

TEST(BMPDecoder, aCalibratedColorSpaceBecomesTheProfile) {
    for (const std::uint32_t length : {108u, 124u}) {
        const BMPFile file{.headerLength = length,
                           .pixels = rows24,
                           .colorSpace = calibratedRGB,
                           .calibration = calibration(1.8)};
        const auto profile = decodeSound(bmp::codec, file.make()).frame().profile;
        ASSERT_TRUE(profile.has_value());
        for (const ToneCurve& curve : toneCurves(&*profile, ColorModel::rgb))
            EXPECT_NEAR(curve.light(0.5f), std::pow(0.5, 1.8), 1e-3);
        EXPECT_EQ(samplesOf(file.make()), samples24);
    }
}

TEST(BMPDecoder, anInvalidCalibrationIsIgnored) {
    std::vector<std::uint32_t> unequal = calibration(1.8);
    unequal[10] *= 2;
    for (const auto& fields : {unequal, calibration(0), std::vector<std::uint32_t>(12)}) {
        const BMPFile file{
            .headerLength = 108, .pixels = rows24, .colorSpace = calibratedRGB, .calibration = fields};
        EXPECT_FALSE(decodeSound(bmp::codec, file.make()).frame().profile.has_value());
    }
}

TEST(BMPDecoder, anEmbeddedProfileIsRead) {
    const ColorProfile adobe = ColorProfile::adobeRGB();
    BMPFile file{.headerLength = 124,
                 .pixels = rows24,
                 .colorSpace = embeddedProfile,
                 .profile = Bytes(adobe.bytes().begin(), adobe.bytes().end())};
    EXPECT_EQ(decodeSound(bmp::codec, file.make()).frame().profile, adobe);
    file.profile.resize(file.profile.size() / 2);
    EXPECT_FALSE(decodeSound(bmp::codec, file.make()).frame().profile.has_value());
}

TEST(BMPDecoder, onlyBMPFilesAreRecognised) {
    const auto recognises = [](Bytes head) { return bmp::codec.recognises(head); };
    EXPECT_TRUE(recognises(BMPFile{}.make()));
    EXPECT_FALSE(recognises({'B', 'M'}));
    EXPECT_FALSE(recognises(BMPFile{.headerLength = 13}.make()));
    EXPECT_FALSE(recognises(BMPFile{.headerLength = 0x01000028}.make()));
    Bytes other = BMPFile{}.make();
    other[1] = 'A';
    EXPECT_FALSE(recognises(other));
}

} // namespace kestrine::testing
