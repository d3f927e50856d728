#include "platform/host/BigEndian.h"
#include "tests/platform/imageio/Decoded.h"

namespace kestrine::testing {

namespace {

using Samples = std::vector<unsigned>;

/// A file of one row.
Bytes fileOf(unsigned width, unsigned channels, const Bytes& chunks, unsigned colorSpace = 0) {
    Bytes file = {'q', 'o', 'i', 'f'};
    appendBigEndian(file, width, 4);
    appendBigEndian(file, 1, 4);
    appendBigEndian(file, channels, 1);
    appendBigEndian(file, colorSpace, 1);
    file.insert(file.end(), chunks.begin(), chunks.end());
    return file;
}

Samples samplesOf(const Bytes& file) {
    const Decoded decoded = decodeSound(qoi::codec, file);
    return {decoded.pixels.bytes.begin(), decoded.pixels.bytes.end()};
}

Reason reasonOf(const Bytes& file) { return decode(qoi::codec, file).failure().reason; }

} // namespace

TEST(QOIDecoder, colorsAreRead) {
    EXPECT_EQ(samplesOf(fileOf(2, 3, {0xFE, 1, 2, 3, 0xFF, 4, 5, 6, 7})), (Samples{1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(samplesOf(fileOf(2, 4, {0xFF, 4, 5, 6, 7, 0xFE, 1, 2, 3})), (Samples{4, 5, 6, 7, 1, 2, 3, 7}));
}

TEST(QOIDecoder, aRunRepeatsThePixelBefore) {
    EXPECT_EQ(samplesOf(fileOf(3, 4, {0xC0, 0xFE, 1, 2, 3, 0xC0})),
              (Samples{0, 0, 0, 255, 1, 2, 3, 255, 1, 2, 3, 255}));
    EXPECT_EQ(samplesOf(fileOf(62, 3, {0xFD})), Samples(3 * 62));
}

TEST(QOIDecoder, differencesWrapAround) {
    EXPECT_EQ(samplesOf(fileOf(2, 3, {0xFE, 0, 255, 128, 0x40 | 0 << 4 | 3 << 2 | 1})),
              (Samples{0, 255, 128, 254, 0, 127}));
    EXPECT_EQ(samplesOf(fileOf(2, 3, {0xFE, 10, 20, 30, 0x80 | 63, 0x0F})),
              (Samples{10, 20, 30, 33, 51, 68}));
    EXPECT_EQ(samplesOf(fileOf(2, 3, {0xFE, 10, 20, 30, 0x80, 0xF0})), (Samples{10, 20, 30, 241, 244, 246}));
}

TEST(QOIDecoder, anIndexRefersToARecentPixel) {
    // The place is (3 * 1 + 5 * 2 + 7 * 3 + 11 * 255) % 64.
    EXPECT_EQ(samplesOf(fileOf(3, 3, {0xFE, 1, 2, 3, 0xFE, 9, 9, 9, 23})),
              (Samples{1, 2, 3, 9, 9, 9, 1, 2, 3}));
    EXPECT_EQ(samplesOf(fileOf(1, 4, {0})), Samples(4)) << "no pixel before";
    EXPECT_EQ(samplesOf(fileOf(3, 4, {0xC0, 0xFE, 1, 2, 3, 53})),
              (Samples{0, 0, 0, 255, 1, 2, 3, 255, 0, 0, 0, 255}))
        << "pixels of a run count";
}

TEST(QOIDecoder, runsContinueInTheNextRow) {
    Bytes file = fileOf(2, 3, {0xFE, 1, 2, 3, 0xC2});
    file[11] = 2;
    EXPECT_EQ(samplesOf(file), (Samples{1, 2, 3, 1, 2, 3, 1, 2, 3, 1, 2, 3}));
}

TEST(QOIDecoder, linearColorsHaveAProfile) {
    EXPECT_FALSE(decodeSound(qoi::codec, fileOf(1, 3, {0xC0})).frame().profile.has_value());
    EXPECT_EQ(decodeSound(qoi::codec, fileOf(1, 3, {0xC0}, 1)).frame().profile,
              ColorProfile::fromGamma(1, sRGBChromaticities, ColorModel::rgb));
}

TEST(QOIDecoder, cutOffFilesAreRefused) {
    const Bytes sound = fileOf(4, 4, {0xFF, 4, 5, 6, 7, 0xFE, 1, 2, 3, 0x80, 0, 0xC0});
    for (std::size_t length = 4; length < sound.size(); ++length)
        EXPECT_EQ(reasonOf(Bytes(sound.begin(), sound.begin() + length)), Reason::truncated) << length;
}

TEST(QOIDecoder, invalidHeadersAreRefused) {
    EXPECT_EQ(reasonOf(fileOf(1, 2, {0xC0})), Reason::malformed);
    EXPECT_EQ(reasonOf(fileOf(1, 3, {0xC0}, 2)), Reason::malformed);
    EXPECT_EQ(reasonOf(fileOf(0, 3, {0xC0})), Reason::empty);
    EXPECT_EQ(reasonOf(fileOf(2'000'000, 3, {0xC0})), Reason::tooLarge);
    EXPECT_FALSE(qoi::codec.recognises(ByteView(fileOf(1, 3, {})).first(3)));
    Bytes other = fileOf(1, 3, {0xC0});
    other[3] = 'g';
    EXPECT_FALSE(qoi::codec.recognises(other));
}

} // namespace kestrine::testing
