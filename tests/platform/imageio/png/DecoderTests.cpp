#include "platform/coregraphics/ToneMapping.h"
#include "platform/host/BigEndian.h"
#include "platform/imageio/png/fast/Chunk.h"
#include "tests/platform/imageio/Decoded.h"
#include "tests/platform/imageio/png/PNGFile.h"
#include "tests/support/Pictures.h"

#include <zlib.h>

namespace kestrine::testing {

namespace {

const auto pattern = [](std::uint32_t x, std::uint32_t y, int c) { return 37 * x + 91 * y + 53u * c + 1; };

/// A file with `pattern` as samples, reduced to `bits` bits.
PNGFile patternFile(int colorType, int bits) {
    PNGFile file{.width = 19, .height = 11, .bitDepth = bits, .colorType = colorType};
    file.sample = [bits](auto x, auto y, int c) {
        return pattern(x, y, c) * (bits == 16 ? 257u : 1u) % (1u << bits);
    };
    return file;
}

const png_color palette[4] = {{10, 20, 30}, {40, 50, 60}, {70, 80, 90}, {250, 240, 230}};

PNGFile indexedFile() {
    PNGFile file{.width = 5, .height = 3, .bitDepth = 2, .colorType = PNG_COLOR_TYPE_PALETTE};
    file.sample = [](auto x, auto y, int) { return (x + y) % 4; };
    file.before = [](auto png, auto info) { png_set_PLTE(png, info, palette, 4); };
    return file;
}

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

/// IFD0 with XResolution and YResolution 300 and the interoperability index of Adobe RGB.
const Bytes exifBlock = {'M',  'M',  0,    42, 0, 0, 0, 8,  0, 3,                           //
                         0x01, 0x1A, 0,    5,  0, 0, 0, 1,  0, 0, 0, 50,                    //
                         0x01, 0x1B, 0,    5,  0, 0, 0, 1,  0, 0, 0, 50,                    //
                         0x87, 0x69, 0,    4,  0, 0, 0, 1,  0, 0, 0, 58,                    //
                         0,    0,    0,    0,  0, 0, 1, 44, 0, 0, 0, 1,                     //
                         0,    1,    0xA0, 1,  0, 3, 0, 0,  0, 1, 0, 2,  0, 0, 0, 0, 0, 0}; //

void addExif(png_structp png, png_infop info) {
    png_set_eXIf_1(png, info, static_cast<png_uint_32>(exifBlock.size()),
                   const_cast<png_bytep>(exifBlock.data()));
}

/// Adds a profile chunk without libpng's checks.
void addProfileChunk(png_structp png, png_infop info, Bytes content) {
    png_unknown_chunk chunk{"iCCP", content.data(), content.size(), PNG_HAVE_IHDR};
    png_set_keep_unknown_chunks(png, PNG_HANDLE_CHUNK_ALWAYS, nullptr, 0);
    png_set_unknown_chunks(png, info, &chunk, 1);
}

/// The content of a profile chunk: a name, and the profile as one stored deflate block with its checksum.
Bytes profileContent(ByteView icc) {
    Bytes content = {'x', 0, 0, 0x78, 0x01, 0x01};
    for (const std::size_t number : {icc.size(), ~icc.size()})
        content.insert(content.end(),
                       {static_cast<std::uint8_t>(number), static_cast<std::uint8_t>(number >> 8)});
    content.insert(content.end(), icc.begin(), icc.end());
    std::uint32_t low = 1, high = 0;
    for (const std::uint8_t byte : icc) {
        low = (low + byte) % 65521;
        high = (high + low) % 65521;
    }
    for (const std::uint32_t number : {high >> 8, high, low >> 8, low})
        content.push_back(static_cast<std::uint8_t>(number));
    return content;
}

/// Changes the size in the header chunk, and its checksum.
void claimSize(Bytes& file, std::uint32_t width, std::uint32_t height) {
    std::uint32_t checksum = 0xFFFFFFFF;
    const auto put = [&](std::size_t at, std::uint32_t number) {
        for (int i = 0; i < 4; ++i)
            file[at + static_cast<std::size_t>(i)] = static_cast<std::uint8_t>(number >> (24 - 8 * i));
    };
    put(16, width);
    put(20, height);
    for (std::size_t at = 12; at < 29; ++at) {
        checksum ^= file[at];
        for (int bit = 0; bit < 8; ++bit)
            checksum = checksum >> 1 ^ (checksum & 1 ? 0xEDB88320 : 0);
    }
    put(29, ~checksum);
}

bool isRefusedOrDamaged(const Bytes& file) {
    const auto decoder = png::codec.open(readerOfBytes(file));
    if (!decoder)
        return true;
    const auto rows = (*decoder)->rows(0, 0);
    return !rows || !readAllRows(**rows) || (*decoder)->damage();
}

} // namespace

TEST(PNGDecoder, everyColourTypeAndDepthIsDecoded) {
    struct Case {
        int colorType, bits;
        ColorModel model;
        bool alpha;
    };
    for (const Case& c : {Case{PNG_COLOR_TYPE_GRAY, 1, ColorModel::gray, false},
                          {PNG_COLOR_TYPE_GRAY, 2, ColorModel::gray, false},
                          {PNG_COLOR_TYPE_GRAY, 4, ColorModel::gray, false},
                          {PNG_COLOR_TYPE_GRAY, 8, ColorModel::gray, false},
                          {PNG_COLOR_TYPE_GRAY, 16, ColorModel::gray, false},
                          {PNG_COLOR_TYPE_GRAY_ALPHA, 8, ColorModel::gray, true},
                          {PNG_COLOR_TYPE_GRAY_ALPHA, 16, ColorModel::gray, true},
                          {PNG_COLOR_TYPE_RGB, 8, ColorModel::rgb, false},
                          {PNG_COLOR_TYPE_RGB, 16, ColorModel::rgb, false},
                          {PNG_COLOR_TYPE_RGB_ALPHA, 8, ColorModel::rgb, true},
                          {PNG_COLOR_TYPE_RGB_ALPHA, 16, ColorModel::rgb, true}})
        for (const bool interlaced : {false, true}) {
            SCOPED_TRACE(std::to_string(c.colorType) + " " + std::to_string(c.bits)
                         + (interlaced ? "i" : ""));
            PNGFile file = patternFile(c.colorType, c.bits);
            file.interlaced = interlaced;
            const RowFormat format{19, 11, c.model, c.alpha,
                                   c.bits == 16 ? SampleDepth::bits16 : SampleDepth::bits8};
            const unsigned scale = c.bits < 8 ? 255 / ((1u << c.bits) - 1) : 1;
            const PixelBuffer expected = makePicture(format, [&](auto x, auto y, std::size_t channel) {
                return scale * file.sample(x, y, static_cast<int>(channel));
            });
            EXPECT_TRUE(samePicture(decodeSound(png::codec, file.make()).pixels, expected));
        }
}

TEST(PNGDecoder, indicesBecomeColours) {
    const Decoded decoded = decodeSound(png::codec, indexedFile().make());
    const PixelBuffer expected = makePicture({5, 3}, [](auto x, auto y, std::size_t c) {
        const png_color& color = palette[(x + y) % 4];
        return c == 0 ? color.red : c == 1 ? color.green : color.blue;
    });
    EXPECT_TRUE(samePicture(decoded.pixels, expected));
}

TEST(PNGDecoder, anIndexedPictureHasAColourTable) {
    const Bytes expected = {10, 20, 30, 40, 50, 60, 70, 80, 90, 250, 240, 230};
    EXPECT_EQ(decodeSound(png::codec, indexedFile().make()).colorTable, expected);
}

TEST(PNGDecoder, aSuggestedPaletteIsNotAColourTable) {
    PNGFile file;
    file.before = [](auto png, auto info) { png_set_PLTE(png, info, palette, 4); };
    EXPECT_TRUE(decodeSound(png::codec, file.make()).colorTable.empty());
}

TEST(PNGDecoder, transparentIndicesBecomeAlpha) {
    PNGFile file = indexedFile();
    file.before = [](auto png, auto info) {
        const png_byte alpha[] = {0, 128};
        png_set_PLTE(png, info, palette, 4);
        png_set_tRNS(png, info, alpha, 2, nullptr);
    };
    const Decoded decoded = decodeSound(png::codec, file.make());
    ASSERT_TRUE(decoded.pixels.format.hasAlpha);
    const std::vector<unsigned> alpha = {sampleAt(decoded.pixels, 0, 0, 3), sampleAt(decoded.pixels, 1, 0, 3),
                                         sampleAt(decoded.pixels, 2, 0, 3)};
    EXPECT_EQ(alpha, (std::vector<unsigned>{0, 128, 255}));
}

TEST(PNGDecoder, aTransparentColourBecomesAlpha) {
    for (const int bits : {8, 16})
        for (const int type : {PNG_COLOR_TYPE_GRAY, PNG_COLOR_TYPE_RGB}) {
            PNGFile file{.width = 2, .height = 1, .bitDepth = bits, .colorType = type};
            file.sample = [](auto x, auto, int) { return x == 0 ? 77u : 78u; };
            file.before = [](auto png, auto info) {
                png_color_16 key{.index = 0, .red = 77, .green = 77, .blue = 77, .gray = 77};
                png_set_tRNS(png, info, nullptr, 0, &key);
            };
            const PixelBuffer pixels = decodeSound(png::codec, file.make()).pixels;
            ASSERT_TRUE(pixels.format.hasAlpha);
            const std::size_t alpha = pixels.format.colorChannels();
            EXPECT_EQ(sampleAt(pixels, 0, 0, alpha), 0u);
            EXPECT_EQ(sampleAt(pixels, 1, 0, alpha), (1u << bits) - 1);
        }
}

TEST(PNGDecoder, roundedPixelsPerMetreBecomeWholePixelsPerInch) {
    struct Case {
        png_uint_32 perMeter;
        double perInch;
    };
    for (const Case& c :
         {Case{2835, 72}, {5669, 144}, {11811, 300}, {2900, 2900 * 0.0254}, {0, 72}, {10, 72}}) {
        PNGFile file;
        file.before = [&](auto png, auto info) {
            png_set_pHYs(png, info, c.perMeter, 11811, PNG_RESOLUTION_METER);
        };
        EXPECT_EQ(decodeSound(png::codec, file.make()).frame().resolution, (Resolution{c.perInch, 300}));
    }
}

TEST(PNGDecoder, anAspectRatioIsNotAResolution) {
    PNGFile file;
    file.before = [](auto png, auto info) { png_set_pHYs(png, info, 11811, 11811, PNG_RESOLUTION_UNKNOWN); };
    EXPECT_EQ(decodeSound(png::codec, file.make()).frame().resolution, Resolution{});
}

TEST(PNGDecoder, exifBeforeOrAfterThePixelsIsFound) {
    PNGFile before, after;
    before.before = addExif;
    after.after = [](auto png) {
        png_write_chunk(png, reinterpret_cast<png_const_bytep>("eXIf"), exifBlock.data(), exifBlock.size());
    };
    EXPECT_EQ(decodeSound(png::codec, before.make()).exif, exifBlock);
    EXPECT_EQ(decodeSound(png::codec, after.make()).exif, exifBlock);
    EXPECT_TRUE(decodeSound(png::codec, PNGFile{}.make()).exif.empty());
}

TEST(PNGDecoder, exifAfterThePixelsSaysTheOrientationButNotTheResolution) {
    static const Bytes block = {'M', 'M', 0, 42, 0, 0, 0, 8,  0, 2,        //
                                1,   18,  0, 3,  0, 0, 0, 1,  0, 6, 0, 0,  //
                                1,   26,  0, 5,  0, 0, 0, 1,  0, 0, 0, 38, //
                                0,   0,   0, 0,  0, 0, 1, 44, 0, 0, 0, 1};
    PNGFile file;
    file.after = [](auto png) {
        png_write_chunk(png, reinterpret_cast<png_const_bytep>("eXIf"), block.data(), block.size());
    };
    const FrameDescription frame = decodeSound(png::codec, file.make()).frame();
    EXPECT_EQ(frame.orientation, 6);
    EXPECT_EQ(frame.resolution, Resolution{});
}

TEST(PNGDecoder, theResolutionOfExifOverridesPixelsPerMetre) {
    PNGFile file;
    file.before = addExif;
    EXPECT_EQ(decodeSound(png::codec, file.make()).frame().resolution, (Resolution{300, 300}));
    file.before = [](auto png, auto info) {
        addExif(png, info);
        png_set_pHYs(png, info, 5669, 5669, PNG_RESOLUTION_METER);
    };
    EXPECT_EQ(decodeSound(png::codec, file.make()).frame().resolution, (Resolution{300, 300}));
}

TEST(PNGDecoder, adobeRGBInExifBecomesTheProfileUnlessTheFileIsMarkedAsSRGB) {
    PNGFile file;
    file.before = addExif;
    EXPECT_EQ(decodeSound(png::codec, file.make()).frame().profile, ColorProfile::adobeRGB());
    file.before = [](auto png, auto info) {
        addExif(png, info);
        png_set_sRGB(png, info, PNG_sRGB_INTENT_PERCEPTUAL);
    };
    EXPECT_FALSE(decodeSound(png::codec, file.make()).frame().profile.has_value());
}

TEST(PNGDecoder, anUntaggedPictureAndOneMarkedAsSRGBHaveNoProfile) {
    PNGFile file;
    EXPECT_FALSE(decodeSound(png::codec, file.make()).frame().profile.has_value());
    file.before = [](auto png, auto info) { png_set_sRGB(png, info, PNG_sRGB_INTENT_PERCEPTUAL); };
    EXPECT_FALSE(decodeSound(png::codec, file.make()).frame().profile.has_value());
}

TEST(PNGDecoder, anEmbeddedProfileIsRead) {
    const ColorProfile profile = ColorProfile::adobeRGB();
    EncodingOptions options;
    options.profile = &profile;
    const Bytes file = encodeSound(png::encode, makePhoto({4, 4}), options);
    EXPECT_EQ(decodeSound(png::codec, file).frame().profile, profile);
}

/// A photograph with the profile of Adobe RGB, and with a chunk after the header.
Bytes fileWithChunk(const char* name, const Bytes& content) {
    const ColorProfile profile = ColorProfile::adobeRGB();
    Bytes chunk;
    appendBigEndian(chunk, content.size(), 4);
    chunk.insert(chunk.end(), name, name + 4);
    chunk.insert(chunk.end(), content.begin(), content.end());
    appendBigEndian(chunk, ::crc32(0, chunk.data() + 4, static_cast<uInt>(chunk.size() - 4)), 4);
    Bytes file = encodeSound(png::encode, makePhoto({8, 8}), {.profile = &profile});
    file.insert(file.begin() + 33, chunk.begin(), chunk.end());
    return file;
}

TEST(PNGDecoder, codingPointsTakePrecedenceOverAProfile) {
    constexpr std::uint8_t displayP3 = 12, bt709 = 1, sRGBCurve = 13, unspecified = 2;
    const auto profileWith = [](const Bytes& points) {
        return decodeSound(png::codec, fileWithChunk("cICP", points)).frame().profile;
    };
    EXPECT_EQ(profileWith({displayP3, sRGBCurve, 0, 1}),
              profileOf({displayP3, sRGBCurve, 0, true}, ColorModel::rgb));
    EXPECT_FALSE(profileWith({bt709, sRGBCurve, 0, 1}));
    for (const Bytes& ignored : {Bytes{unspecified, unspecified, 0, 1}, Bytes{displayP3, sRGBCurve, 1, 1},
                                 Bytes{displayP3, sRGBCurve, 0, 0}, Bytes{displayP3, sRGBCurve}})
        EXPECT_EQ(profileWith(ignored), ColorProfile::adobeRGB());
}

TEST(PNGDecoder, aPictureOfHighRangeIsMappedToTheOrdinaryOne) {
    constexpr std::uint8_t bt2020 = 9, pq = 16, hlg = 18;
    for (const std::uint8_t transfer : {pq, hlg}) {
        const Decoded decoded = decodeSound(png::codec, fileWithChunk("cICP", {bt2020, transfer, 0, 1}));
        RowSourcePointer expected = rowsInSDR(rowsOfPixels(std::make_shared<PixelBuffer>(makePhoto({8, 8}))),
                                              *highRangeOf({bt2020, transfer, 0, true}, 0));
        EXPECT_TRUE(samePicture(decoded.pixels, *readAllRows(*expected)));
        EXPECT_EQ(decoded.frame().profile, profileOf({bt2020, transfer, 0, true}, ColorModel::rgb));
    }
}

TEST(PNGDecoder, aBrokenProfileIsIgnored) {
    PNGFile file;
    file.before = [](auto png, auto info) {
        addProfileChunk(png, info, {'x', 0, 0, 0x78, 0x9C, 0x03, 0, 0, 0, 0, 1}); // an empty stream
    };
    const Bytes bytes = file.make();
    ASSERT_NE(std::string(bytes.begin(), bytes.end()).find("iCCP"), std::string::npos);
    EXPECT_FALSE(decodeSound(png::codec, bytes).frame().profile.has_value());
}

TEST(PNGDecoder, aProfileOfAnotherColourModelIsIgnored) {
    const auto gray = ColorProfile::fromGamma(1.8, sRGBChromaticities, ColorModel::gray);
    PNGFile file{.colorType = PNG_COLOR_TYPE_RGB};
    file.before = [&](auto png, auto info) { addProfileChunk(png, info, profileContent(gray->bytes())); };
    EXPECT_FALSE(decodeSound(png::codec, file.make()).frame().profile.has_value());
    file.colorType = PNG_COLOR_TYPE_GRAY;
    EXPECT_EQ(decodeSound(png::codec, file.make()).frame().profile, gray) << "the chunk itself is valid";
}

TEST(PNGDecoder, aGammaBecomesAProfile) {
    const auto expected = ColorProfile::fromGamma(1 / 0.55, sRGBChromaticities, ColorModel::rgb);
    EXPECT_EQ(decodeSound(png::codec, calibratedFile(0.55).make()).frame().profile, expected);
    const auto gray = ColorProfile::fromGamma(1.0, sRGBChromaticities, ColorModel::gray);
    EXPECT_EQ(decodeSound(png::codec, calibratedFile(1.0, PNG_COLOR_TYPE_GRAY).make()).frame().profile, gray);
}

TEST(PNGDecoder, aGammaWithinOnePercentOfSRGBsCountsAsSRGB) {
    for (const double gamma : {0.45455, 0.4502, 0.4589})
        EXPECT_FALSE(decodeSound(png::codec, calibratedFile(gamma).make()).frame().profile.has_value())
            << gamma;
    for (const double gamma : {0.4495, 0.4595})
        EXPECT_TRUE(decodeSound(png::codec, calibratedFile(gamma).make()).frame().profile.has_value())
            << gamma;
}

TEST(PNGDecoder, primariesOtherThanSRGBsMakeAProfileEvenWithItsGamma) {
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

TEST(PNGDecoder, primariesWithoutAGammaAreIgnored) {
    PNGFile file;
    file.before = addWidePrimaries;
    EXPECT_FALSE(decodeSound(png::codec, file.make()).frame().profile.has_value());
}

TEST(PNGDecoder, aFileCutOffAnywhereIsRefusedOrItsDamageIsReported) {
    const Bytes file = indexedFile().make();
    for (std::size_t length = 0; length < file.size(); ++length)
        EXPECT_TRUE(
            isRefusedOrDamaged(Bytes(file.begin(), file.begin() + static_cast<std::ptrdiff_t>(length))))
            << length << " of " << file.size() << " bytes";
}

TEST(PNGDecoder, rowsAfterTheEndOfTheFileAreClear) {
    for (const bool hasAlpha : {false, true}) {
        const PixelBuffer picture = makePhoto({.width = 50, .height = 60, .hasAlpha = hasAlpha});
        Bytes file = encodeSound(png::encode, picture);
        file.resize(file.size() / 2);
        const auto decoder = *png::codec.open(readerOfBytes(file));
        const PixelBuffer decoded = *readAllRows(**decoder->rows(0, 0));
        std::uint32_t y = 0;
        while (y < 60 && std::ranges::equal(decoded.row(y), picture.row(y)))
            ++y;
        EXPECT_GT(y, 10u);
        for (; y < 60; ++y)
            EXPECT_EQ(std::ranges::count(decoded.row(y), 0), std::ptrdiff_t(decoded.format.bytesPerRow()));
        EXPECT_EQ(decoder->damage()->reason, Reason::truncated);
    }
}

TEST(PNGDecoder, aProfileIsNotLostBecausePrimariesAreInvalid) {
    const ColorProfile profile = ColorProfile::adobeRGB();
    Bytes file = encodeSound(png::encode, makePhoto({4, 4}), {.profile = &profile});
    constexpr std::size_t afterHeader = 33;
    Bytes primaries;
    for (const std::uint32_t value : {31270u, 32900u, 10000u, 20000u, 30000u, 60000u, 15000u, 6000u})
        appendBigEndian(primaries, value, 4);
    Bytes chunk;
    png::appendChunk("cHRM", {primaries}, chunk);
    file.insert(file.begin() + afterHeader, chunk.begin(), chunk.end());
    EXPECT_EQ(decodeSound(png::codec, file).frame().profile, profile);
}

TEST(PNGDecoder, damagedPixelsAreRefusedOrReported) {
    for (const bool interlaced : {false, true}) {
        PNGFile recipe = patternFile(PNG_COLOR_TYPE_RGB, 8);
        recipe.interlaced = interlaced;
        const Bytes file = recipe.make();
        for (std::size_t position = 41; position < file.size() - 12; ++position) {
            Bytes damaged = file;
            damaged[position] ^= 0x10;
            EXPECT_TRUE(isRefusedOrDamaged(damaged)) << "byte " << position;
        }
    }
}

TEST(PNGDecoder, transparencyInADamagedChunkIsLostAndReported) {
    PNGFile recipe = indexedFile();
    recipe.before = [](auto png, auto info) {
        const png_byte alpha = 0;
        png_set_PLTE(png, info, palette, 4);
        png_set_tRNS(png, info, &alpha, 1, nullptr);
    };
    Bytes file = recipe.make();
    const std::string_view name = "tRNS";
    const auto chunk = std::search(file.begin(), file.end(), name.begin(), name.end());
    for (const bool isDamaged : {false, true}) {
        *(chunk + 4) ^= isDamaged;
        const auto decoder = *png::codec.open(readerOfBytes(file));
        EXPECT_TRUE(decoder->rows(0, 0).ok());
        EXPECT_EQ(decoder->damage().has_value(), isDamaged);
    }
}

/// A file of indices with this tRNS chunk before its palette.
Bytes withEarlyTransparency(ByteView alpha) {
    Bytes file = indexedFile().make();
    constexpr std::size_t afterHeader = 33;
    Bytes chunk;
    png::appendChunk("tRNS", {alpha}, chunk);
    file.insert(file.begin() + afterHeader, chunk.begin(), chunk.end());
    return file;
}

TEST(PNGDecoder, transparencyBeforeThePaletteCounts) {
    const Decoded decoded = decodeSound(png::codec, withEarlyTransparency(Bytes{0, 128}));
    ASSERT_TRUE(decoded.pixels.format.hasAlpha);
    EXPECT_EQ(sampleAt(decoded.pixels, 0, 0, 3), 0U);
    EXPECT_EQ(sampleAt(decoded.pixels, 1, 0, 3), 128U);
    EXPECT_EQ(sampleAt(decoded.pixels, 2, 0, 3), 255U);
}

TEST(PNGDecoder, transparencyBeforeThePaletteThatIsDamagedIsLostAndReported) {
    Bytes wrongChecksum = withEarlyTransparency(Bytes{0, 128});
    wrongChecksum[33 + 8] ^= 1;
    for (const Bytes& file : {wrongChecksum, withEarlyTransparency(Bytes(257)), withEarlyTransparency({})}) {
        const auto decoder = *png::codec.open(readerOfBytes(file));
        EXPECT_FALSE(decoder->frames().front().format.hasAlpha);
        EXPECT_TRUE(decoder->rows(0, 0).ok());
        EXPECT_TRUE(decoder->damage().has_value());
    }
}

TEST(PNGDecoder, aSizeThatTheFileCannotHoldIsRefusedAtOnce) {
    Bytes file = PNGFile{.width = 1, .height = 1}.make();
    claimSize(file, 30'000, 30'000);
    const Result<Decoded> decoded = decode(png::codec, file);
    ASSERT_FALSE(decoded.ok());
    EXPECT_EQ(decoded.failure().reason, Reason::truncated);
}

TEST(PNGDecoder, aLargeInterlacedPictureIsNotHeldInMemory) {
    Bytes file = PNGFile{.width = 1, .height = 1, .interlaced = true}.make();
    claimSize(file, 30'000, 30'000);
    file.resize(3'000'000); // long enough for the pixels
    const auto decoder = png::codec.open(readerOfBytes(std::move(file)));
    ASSERT_TRUE(decoder.ok());
    EXPECT_EQ((*decoder)->frames().front().heldBytes, 0U);
    EXPECT_TRUE((*decoder)->rows(0, 0).ok());
}

TEST(PNGDecoder, aPictureBeyondTheLimitsIsRefused) {
    Bytes file = PNGFile{.width = 1, .height = 1}.make();
    claimSize(file, 40'000, 40'000);
    const Result<Decoded> decoded = decode(png::codec, file);
    ASSERT_FALSE(decoded.ok());
    EXPECT_EQ(decoded.failure().reason, Reason::tooLarge);
}

TEST(PNGDecoder, rowsCanBeReadAgainAndOutliveTheDecoder) {
    auto decoder = png::codec.open(readerOfBytes(indexedFile().make()));
    ASSERT_TRUE(decoder.ok());
    auto first = (*decoder)->rows(0, 0), second = (*decoder)->rows(0, 0);
    ASSERT_TRUE(first.ok() && second.ok());
    decoder->reset();
    EXPECT_TRUE(samePicture(*readAllRows(**first), *readAllRows(**second)));
}

TEST(PNGDecoder, anAnimationTellsHowManyFramesItHas) {
    EXPECT_EQ(decodeSound(png::codec, PNGFile{}.make()).contents, FileContents{});
    PNGFile recipe;
    recipe.before = [](png_structp png, png_infop info) {
        Bytes content{0, 0, 1, 2, 0, 0, 0, 0}; // frames and repetitions
        png_unknown_chunk chunk{"acTL", content.data(), content.size(), PNG_HAVE_IHDR};
        png_set_keep_unknown_chunks(png, PNG_HANDLE_CHUNK_ALWAYS, nullptr, 0);
        png_set_unknown_chunks(png, info, &chunk, 1);
    };
    EXPECT_EQ(decodeSound(png::codec, recipe.make()).contents,
              (FileContents{FileContents::Kind::animation, 258}));
}

} // namespace kestrine::testing
