#include "tests/platform/imageio/Decoded.h"

namespace kestrine::testing {

namespace {

using Samples = std::vector<unsigned>;

enum Type : std::uint8_t { indexed = 1, colored = 2, grayscale = 3, runLength = 8 };
enum Origin : std::uint8_t { bottomLeft = 0, bottomRight = 0x10, topLeft = 0x20, topRight = 0x30 };

void append16(Bytes& bytes, unsigned value) {
    bytes.insert(bytes.end(), {static_cast<std::uint8_t>(value), static_cast<std::uint8_t>(value >> 8)});
}

/// Makes TGA files.
struct TGAFile {
    unsigned type = colored, bits = 24, width = 2, height = 2;
    Origin origin = topLeft;
    unsigned attributeBits = 0;
    unsigned firstColor = 0, colorBits = 0;
    Bytes colorMap = {}, pixels = {}, id = {};
    std::optional<std::uint8_t> attributesType = {}; ///< in an extension area

    Bytes make() const {
        const std::size_t colors = colorBits == 0 ? 0 : colorMap.size() / ((colorBits + 7) / 8);
        Bytes file = {static_cast<std::uint8_t>(id.size()), colors > 0, static_cast<std::uint8_t>(type)};
        append16(file, firstColor);
        append16(file, static_cast<unsigned>(colors));
        file.push_back(static_cast<std::uint8_t>(colorBits));
        for (const unsigned field : {7u, 9u, width, height})
            append16(file, field);
        file.push_back(static_cast<std::uint8_t>(bits));
        file.push_back(static_cast<std::uint8_t>(origin | attributeBits));
        for (const Bytes* part : {&id, &colorMap, &pixels})
            file.insert(file.end(), part->begin(), part->end());
        if (attributesType)
            appendExtensionArea(file);
        return file;
    }

private:
    void appendExtensionArea(Bytes& file) const {
        const std::size_t area = file.size();
        append16(file, 495);
        file.resize(area + 494);
        file.push_back(*attributesType);
        append16(file, static_cast<unsigned>(area));
        file.resize(file.size() + 6);
        for (const char character : std::string("TRUEVISION-XFILE.") + '\0')
            file.push_back(static_cast<std::uint8_t>(character));
    }
};

Samples samplesOf(const TGAFile& file) {
    const Decoded decoded = decodeSound(tga::codec, file.make());
    EXPECT_EQ(decoded.frame().format, decoded.pixels.format);
    return {decoded.pixels.bytes.begin(), decoded.pixels.bytes.end()};
}

bool hasAlpha(const TGAFile& file) { return decodeSound(tga::codec, file.make()).frame().format.hasAlpha; }

Reason reasonOf(const TGAFile& file) { return decode(tga::codec, file.make()).failure().reason; }

bool isRecognised(const TGAFile& file) { return tga::codec.recognises(file.make()); }

const Bytes threeColors = {30, 20, 10, 60, 50, 40, 90, 80, 70};

TGAFile indexedFile(const Bytes& indices) {
    return {.type = indexed,
            .bits = 8,
            .width = static_cast<unsigned>(indices.size()),
            .height = 1,
            .colorBits = 24,
            .colorMap = threeColors,
            .pixels = indices};
}

/// 3 x 2 grey pixels in three packets: a run over both rows, two literals, a run.
TGAFile runLengthFile(Origin origin) {
    return {.type = grayscale | runLength,
            .bits = 8,
            .width = 3,
            .origin = origin,
            .pixels = {0x80 | 1, 5, 1, 6, 7, 0x80 | 1, 8}};
}

} // namespace

TEST(TGADecoder, colorsOf24And32BitsAreStoredBlueFirst) {
    EXPECT_EQ(samplesOf({.width = 2, .height = 1, .pixels = {3, 2, 1, 6, 5, 4}}),
              (Samples{1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(samplesOf({.bits = 32, .width = 2, .height = 1, .pixels = {3, 2, 1, 9, 6, 5, 4, 0}}),
              (Samples{1, 2, 3, 9, 4, 5, 6, 0}));
}

TEST(TGADecoder, colorsOf15And16BitsHave5BitsPerChannel) {
    const Bytes pixels = {0x00, 0xFC, 0xE1, 0x03};
    for (const unsigned bits : {15u, 16u})
        EXPECT_EQ(samplesOf({.bits = bits, .width = 2, .height = 1, .pixels = pixels}),
                  (Samples{255, 0, 0, 0, 255, 8}));
    EXPECT_EQ(samplesOf({.bits = 16, .width = 2, .height = 1, .attributeBits = 1, .pixels = pixels}),
              (Samples{255, 0, 0, 255, 0, 255, 8, 0}));
}

TEST(TGADecoder, graysMayHaveAlphaOrOneBit) {
    EXPECT_EQ(samplesOf({.type = grayscale, .bits = 8, .pixels = {1, 2, 3, 4}}), (Samples{1, 2, 3, 4}));
    EXPECT_EQ(samplesOf({.type = grayscale, .bits = 16, .height = 1, .pixels = {1, 2, 3, 4}}),
              (Samples{1, 2, 3, 4}));
    EXPECT_EQ(samplesOf({.type = grayscale, .bits = 1, .width = 9, .height = 1, .pixels = {0xA0, 0x80}}),
              (Samples{255, 0, 255, 0, 0, 0, 0, 0, 255}));
}

TEST(TGADecoder, aRowMayBeginInAnyCorner) {
    const auto gray = [](Origin origin) {
        return samplesOf(
            {.type = grayscale, .bits = 8, .width = 3, .origin = origin, .pixels = {1, 2, 3, 4, 5, 6}});
    };
    EXPECT_EQ(gray(topLeft), (Samples{1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(gray(topRight), (Samples{3, 2, 1, 6, 5, 4}));
    EXPECT_EQ(gray(bottomLeft), (Samples{4, 5, 6, 1, 2, 3}));
    EXPECT_EQ(gray(bottomRight), (Samples{6, 5, 4, 3, 2, 1}));
    EXPECT_EQ(samplesOf({.width = 2, .height = 1, .origin = topRight, .pixels = {3, 2, 1, 6, 5, 4}}),
              (Samples{4, 5, 6, 1, 2, 3}));
}

TEST(TGADecoder, packetsMayContinueInTheNextRow) {
    EXPECT_EQ(samplesOf(runLengthFile(topLeft)), (Samples{5, 5, 6, 7, 8, 8}));
    EXPECT_EQ(samplesOf(runLengthFile(bottomLeft)), (Samples{7, 8, 8, 5, 5, 6}));
    EXPECT_EQ(samplesOf(runLengthFile(bottomRight)), (Samples{8, 8, 7, 6, 5, 5}));
}

TEST(TGADecoder, runsRepeatPixelsOfEverySize) {
    const auto pixels = [](unsigned type, unsigned bits, const Bytes& packet) {
        return samplesOf({.type = type | runLength, .bits = bits, .height = 1, .pixels = packet});
    };
    EXPECT_EQ(pixels(colored, 24, {0x81, 3, 2, 1}), (Samples{1, 2, 3, 1, 2, 3}));
    EXPECT_EQ(pixels(colored, 32, {0x81, 3, 2, 1, 4}), (Samples{1, 2, 3, 4, 1, 2, 3, 4}));
    EXPECT_EQ(pixels(colored, 16, {0x81, 0x1F, 0x00}), (Samples{0, 0, 255, 0, 0, 255}));
    EXPECT_EQ(pixels(grayscale, 16, {0x80, 1, 2, 0x00, 3, 4}), (Samples{1, 2, 3, 4}));
}

TEST(TGADecoder, indicesBecomeColors) {
    EXPECT_EQ(samplesOf(indexedFile({2, 0, 1, 3})), (Samples{70, 80, 90, 10, 20, 30, 40, 50, 60, 0, 0, 0}));
    TGAFile wide = indexedFile({2, 0, 1, 0});
    wide.bits = 16;
    wide.width = 2;
    EXPECT_EQ(samplesOf(wide), (Samples{70, 80, 90, 40, 50, 60}));
}

TEST(TGADecoder, theColorMapMayBeginAtAnyIndex) {
    TGAFile file = indexedFile({100, 102, 99, 0});
    file.firstColor = 100;
    EXPECT_EQ(samplesOf(file), (Samples{10, 20, 30, 70, 80, 90, 0, 0, 0, 0, 0, 0}));
    file.firstColor = 65534;
    EXPECT_FALSE(isRecognised(file)) << "an index beyond 16 bits";
}

TEST(TGADecoder, entriesOfTheColorMapMayHaveAlpha) {
    TGAFile file = indexedFile({1, 0, 2});
    file.colorBits = 32;
    file.colorMap = {3, 2, 1, 0, 6, 5, 4, 128};
    EXPECT_EQ(samplesOf(file), (Samples{4, 5, 6, 128, 1, 2, 3, 0, 0, 0, 0, 255}));
    EXPECT_TRUE(decodeSound(tga::codec, file.make()).colorTable.empty());
    file.colorBits = 16;
    file.colorMap = {0x00, 0x7C, 0x1F, 0x00, 0, 0};
    EXPECT_EQ(samplesOf(file), (Samples{0, 0, 255, 255, 0, 0, 0, 0, 0}));
}

TEST(TGADecoder, theColorTableIsReported) {
    EXPECT_EQ(decodeSound(tga::codec, indexedFile({0}).make()).colorTable,
              (Bytes{10, 20, 30, 40, 50, 60, 70, 80, 90}));
    EXPECT_TRUE(decodeSound(tga::codec, TGAFile{.pixels = Bytes(12)}.make()).colorTable.empty());
}

TEST(TGADecoder, theIdentificationAndAnUnusedColorMapAreSkipped) {
    EXPECT_EQ(samplesOf({.height = 1,
                         .colorBits = 24,
                         .colorMap = threeColors,
                         .pixels = {3, 2, 1, 6, 5, 4},
                         .id = {'a', 'b', 'c'}}),
              (Samples{1, 2, 3, 4, 5, 6}));
}

TEST(TGADecoder, theExtensionAreaDecidesAboutAlpha) {
    TGAFile file{.bits = 32, .width = 1, .height = 1, .attributeBits = 8, .pixels = {30, 20, 10, 51}};
    for (const std::uint8_t none : Bytes{1, 2}) {
        file.attributesType = none;
        EXPECT_EQ(samplesOf(file), (Samples{10, 20, 30})) << int{none};
    }
    file.attributesType = 3;
    EXPECT_EQ(samplesOf(file), (Samples{10, 20, 30, 51}));
    file.attributesType = 4;
    EXPECT_EQ(samplesOf(file), (Samples{50, 100, 150, 51})) << "colours multiplied by alpha";
    file.attributeBits = 0;
    file.attributesType = 0;
    EXPECT_EQ(samplesOf(file), (Samples{10, 20, 30}));
}

TEST(TGADecoder, anExtensionAreaThatContradictsTheAttributeBitsOrIsUnknownIsIgnored) {
    for (const std::uint8_t type : Bytes{0, 5})
        EXPECT_TRUE(hasAlpha({.bits = 32,
                              .width = 1,
                              .height = 1,
                              .attributeBits = 8,
                              .pixels = {1, 2, 3, 4},
                              .attributesType = type}));
}

TEST(TGADecoder, withoutAnExtensionAreaAFourthByteIsAlpha) {
    for (const unsigned attributeBits : {0u, 8u})
        EXPECT_TRUE(hasAlpha(
            {.bits = 32, .width = 1, .height = 1, .attributeBits = attributeBits, .pixels = {1, 2, 3, 4}}));
}

TEST(TGADecoder, alphaThatIs0EverywhereIsIgnored) {
    const TGAFile file{.bits = 32, .height = 1, .attributeBits = 8, .pixels = {3, 2, 1, 0, 6, 5, 4, 0}};
    EXPECT_EQ(samplesOf(file), (Samples{1, 2, 3, 255, 4, 5, 6, 255}));
}

TEST(TGADecoder, aDamagedExtensionAreaIsIgnored) {
    const TGAFile file{
        .bits = 32, .width = 1, .height = 1, .attributeBits = 8, .pixels = {3, 2, 1, 4}, .attributesType = 1};
    const Bytes sound = file.make();
    Bytes shorter = sound, elsewhere = sound;
    shorter[22] = 0;                       // its length
    elsewhere[sound.size() - 26 + 1] = 99; // its offset
    for (const Bytes& damaged : {shorter, elsewhere})
        EXPECT_TRUE(decodeSound(tga::codec, damaged).frame().format.hasAlpha);
}

TEST(TGADecoder, cutOffFilesAreRefused) {
    for (const TGAFile& file : {TGAFile{.pixels = Bytes(12)}, runLengthFile(topLeft),
                                runLengthFile(bottomLeft), indexedFile({0})}) {
        const Bytes sound = file.make();
        for (std::size_t length = 18; length < sound.size(); ++length) {
            const auto decoded = decode(tga::codec, Bytes(sound.begin(), sound.begin() + length));
            ASSERT_FALSE(decoded.ok()) << length;
            EXPECT_EQ(decoded.failure().reason, Reason::truncated) << length;
        }
    }
}

TEST(TGADecoder, picturesBeyondTheLimitAreRefused) {
    EXPECT_EQ(reasonOf({.width = 65535, .height = 65535}), Reason::tooLarge);
}

TEST(TGADecoder, onlyConsistentHeadersAreRecognised) {
    EXPECT_TRUE(isRecognised({}));
    EXPECT_TRUE(isRecognised(indexedFile({0})));
    EXPECT_FALSE(isRecognised({.width = 0})) << "no pixels";
    EXPECT_FALSE(isRecognised({.height = 0})) << "no pixels";
    EXPECT_FALSE(isRecognised({.bits = 8})) << "colours of one byte";
    EXPECT_FALSE(isRecognised({.type = 0})) << "no picture";
    EXPECT_FALSE(isRecognised({.type = 4})) << "an unknown type";
    EXPECT_FALSE(isRecognised({.attributeBits = 4})) << "4 bits of alpha";
    EXPECT_FALSE(isRecognised({.type = grayscale | runLength, .bits = 1})) << "run-length codes of bits";
    EXPECT_FALSE(isRecognised({.type = indexed, .bits = 8})) << "indices without a colour map";
    EXPECT_FALSE(isRecognised({.firstColor = 1})) << "a first colour without a colour map";
    EXPECT_FALSE(isRecognised({.colorBits = 12, .colorMap = {0, 0}})) << "colours of 12 bits";
    Bytes interleaved = TGAFile{}.make();
    interleaved[17] |= 0x40;
    EXPECT_FALSE(tga::codec.recognises(interleaved));
    EXPECT_FALSE(tga::codec.recognises(ByteView(TGAFile{}.make()).first(17)));
}

TEST(TGADecoder, iconsAreNotRecognised) {
    const Bytes icon = {0, 0, 1, 0, 1, 0, 16, 16, 0, 0, 1, 0, 24, 0, 0x68, 4, 0, 0, 22, 0, 0, 0};
    Bytes cursor = icon;
    cursor[2] = 2;
    EXPECT_FALSE(tga::codec.recognises(icon));
    EXPECT_FALSE(tga::codec.recognises(cursor));
}

} // namespace kestrine::testing
