#include "tests/platform/imageio/Decoded.h"

namespace kestrine::testing {

namespace {

using Samples = std::vector<unsigned>;

void append16(Bytes& bytes, unsigned value) {
    bytes.insert(bytes.end(), {static_cast<std::uint8_t>(value), static_cast<std::uint8_t>(value >> 8)});
}

/// Makes PCX files.
struct PCXFile {
    unsigned width = 3, height = 1, bits = 8, planes = 3, planeBytes = 4;
    unsigned isRunLength = 0, paletteKind = 1;
    Bytes palette = {};     ///< in the header
    Bytes content = {};     ///< after the header
    Bytes longPalette = {}; ///< at the end, after its mark

    Bytes make() const {
        Bytes file = {10, 5, static_cast<std::uint8_t>(isRunLength), static_cast<std::uint8_t>(bits)};
        for (const unsigned field : {4u, 6u, 4 + width - 1, 6 + height - 1, 640u, 480u})
            append16(file, field);
        file.insert(file.end(), palette.begin(), palette.end());
        file.resize(65);
        file.push_back(static_cast<std::uint8_t>(planes));
        append16(file, planeBytes);
        append16(file, paletteKind);
        file.resize(128);
        file.insert(file.end(), content.begin(), content.end());
        if (!longPalette.empty())
            file.push_back(12);
        file.insert(file.end(), longPalette.begin(), longPalette.end());
        return file;
    }
};

Samples samplesIn(const Bytes& file) {
    const Decoded decoded = decodeSound(pcx::codec, file);
    return {decoded.pixels.bytes.begin(), decoded.pixels.bytes.end()};
}
Samples samplesOf(const PCXFile& file) { return samplesIn(file.make()); }

Reason reasonOf(const Bytes& file) { return decode(pcx::codec, file).failure().reason; }

const Bytes fourColors = {10, 20, 30, 40, 50, 60, 70, 80, 90, 1, 2, 3};

/// Indices of 8 bits; colour i is (i, 255, 0).
PCXFile indexedFile() {
    PCXFile file{.planes = 1, .content = {1, 2, 200, 99}, .longPalette = Bytes(768)};
    for (std::size_t i = 0; i < 256; ++i) {
        file.longPalette[3 * i] = static_cast<std::uint8_t>(i);
        file.longPalette[3 * i + 1] = 255;
    }
    return file;
}

const Samples indexedSamples = {1, 255, 0, 2, 255, 0, 200, 255, 0};

/// A DCX file with these pages, of which the first is stored last.
Bytes listOf(const Bytes& first, const Bytes& second) {
    Bytes file = {0xB1, 0x68, 0xDE, 0x3A};
    for (const std::size_t number : {16 + second.size(), std::size_t{16}, std::size_t{0}}) {
        append16(file, static_cast<unsigned>(number));
        append16(file, 0);
    }
    file.insert(file.end(), second.begin(), second.end());
    file.insert(file.end(), first.begin(), first.end());
    return file;
}

} // namespace

TEST(PCXDecoder, planesOf8BitsAreColors) {
    EXPECT_EQ(samplesOf({.content = {1, 2, 3, 99, 4, 5, 6, 99, 7, 8, 9, 99}}),
              (Samples{1, 4, 7, 2, 5, 8, 3, 6, 9}));
    EXPECT_EQ(samplesOf({.width = 1, .planes = 4, .planeBytes = 2, .content = {1, 99, 2, 99, 3, 99, 4, 99}}),
              (Samples{1, 2, 3, 4}));
}

TEST(PCXDecoder, oneBitIsBlackOrWhite) {
    EXPECT_EQ(samplesOf({.width = 9,
                         .bits = 1,
                         .planes = 1,
                         .planeBytes = 2,
                         .palette = fourColors,
                         .content = {0xA0, 0x80}}),
              (Samples{255, 0, 255, 0, 0, 0, 0, 0, 255}));
}

TEST(PCXDecoder, indicesOfUpTo4BitsUseThePaletteInTheHeader) {
    const Samples colors = {40, 50, 60, 70, 80, 90, 1, 2, 3};
    EXPECT_EQ(samplesOf({.bits = 2, .planes = 1, .palette = fourColors, .content = {0x6C, 0, 0, 0}}), colors);
    EXPECT_EQ(samplesOf({.bits = 4, .planes = 1, .palette = fourColors, .content = {0x12, 0x30, 0, 0}}),
              colors);
    for (const unsigned planes : {2u, 3u, 4u}) {
        Bytes content(2 * planes);
        content[0] = 0xA0; // the lowest bits of 1, 2, 3
        content[2] = 0x60;
        EXPECT_EQ(
            samplesOf(
                {.bits = 1, .planes = planes, .planeBytes = 2, .palette = fourColors, .content = content}),
            colors);
    }
}

TEST(PCXDecoder, indicesOf8BitsUseThePaletteAtTheEnd) {
    EXPECT_EQ(samplesOf(indexedFile()), indexedSamples);
    EXPECT_EQ(decodeSound(pcx::codec, indexedFile().make()).colorTable, indexedFile().longPalette);
    Bytes surplus = indexedFile().make();
    surplus.insert(surplus.end(), {1, 2, 3});
    EXPECT_EQ(samplesIn(surplus), indexedSamples) << "the palette follows the last row";
}

TEST(PCXDecoder, withoutItsPaletteAFileIsGrayOnlyIfItSaysSo) {
    PCXFile file{.planes = 1, .paletteKind = 2, .content = {1, 2, 200, 99}};
    EXPECT_EQ(samplesOf(file), (Samples{1, 2, 200}));
    file.paletteKind = 1;
    EXPECT_EQ(reasonOf(file.make()), Reason::truncated);
}

TEST(PCXDecoder, runsMayContinueInTheNextPlaneAndRow) {
    EXPECT_EQ(samplesOf({.width = 2,
                         .height = 2,
                         .planeBytes = 2,
                         .isRunLength = 1,
                         .content = {1, 0xC3, 200, 5, 0xC0, 9, 0xC7, 7}}),
              (Samples{1, 200, 5, 200, 200, 7, 7, 7, 7, 7, 7, 7}));
}

TEST(PCXDecoder, theFirstPageOfAListIsShown) {
    const Bytes colors = PCXFile{.content = Bytes(12, 7)}.make();
    EXPECT_EQ(samplesIn(listOf(indexedFile().make(), colors)), indexedSamples);
    const auto decoder = pcx::codec.open(readerOfBytes(listOf(colors, indexedFile().make())));
    ASSERT_TRUE(decoder.ok());
    EXPECT_EQ((*decoder)->contents(), (FileContents{FileContents::Kind::pages, 2}));
    EXPECT_EQ((*pcx::codec.open(readerOfBytes(colors)))->contents(), FileContents{});
}

TEST(PCXDecoder, listsWithoutAPCXAreRefused) {
    EXPECT_EQ(reasonOf({0xB1, 0x68, 0xDE, 0x3A, 0, 0, 0, 0}), Reason::empty);
    EXPECT_EQ(reasonOf({0xB1, 0x68, 0xDE, 0x3A}), Reason::empty);
    EXPECT_EQ(reasonOf({0xB1, 0x68, 0xDE, 0x3A, 1, 0, 0, 0, 0, 0, 0, 0}), Reason::malformed);
    EXPECT_EQ(reasonOf({0xB1, 0x68, 0xDE, 0x3A, 0, 1, 0, 0, 0, 0, 0, 0}), Reason::malformed)
        << "outside the file";
}

TEST(PCXDecoder, unknownKindsAreRefused) {
    EXPECT_EQ(reasonOf(PCXFile{.bits = 4, .planes = 3, .content = Bytes(12)}.make()), Reason::unsupported);
    EXPECT_EQ(reasonOf(PCXFile{.planeBytes = 2, .content = Bytes(12)}.make()), Reason::malformed);
    EXPECT_EQ(reasonOf(PCXFile{.width = 65530, .height = 65530, .planeBytes = 65530}.make()),
              Reason::tooLarge);
}

TEST(PCXDecoder, onlyPCXFilesAreRecognised) {
    const auto recognises = [](std::size_t position, std::uint8_t value) {
        Bytes file = indexedFile().make();
        file[position] = value;
        return pcx::codec.recognises(file);
    };
    EXPECT_TRUE(recognises(0, 10));
    EXPECT_FALSE(recognises(0, 11));
    EXPECT_FALSE(recognises(1, 1)) << "version";
    EXPECT_FALSE(recognises(1, 6)) << "version";
    EXPECT_FALSE(recognises(2, 2)) << "compression";
    EXPECT_FALSE(recognises(3, 3)) << "bits";
    EXPECT_FALSE(recognises(8, 3)) << "the right side is left of the left one";
    EXPECT_FALSE(recognises(10, 5)) << "the lower side is above the upper one";
    EXPECT_FALSE(pcx::codec.recognises(ByteView(indexedFile().make()).first(11)));
}

TEST(PCXDecoder, cutOffFilesAreRefused) {
    const PCXFile runs{.height = 2, .isRunLength = 1, .content = {0xCC, 1, 2, 0xCB, 200}};
    for (const Bytes& sound : {indexedFile().make(), runs.make(), PCXFile{.content = Bytes(12)}.make()})
        for (std::size_t length = 12; length < sound.size(); ++length) {
            const auto decoded = decode(pcx::codec, Bytes(sound.begin(), sound.begin() + length));
            ASSERT_FALSE(decoded.ok()) << length;
            EXPECT_EQ(decoded.failure().reason, Reason::truncated) << length;
        }
}

} // namespace kestrine::testing
