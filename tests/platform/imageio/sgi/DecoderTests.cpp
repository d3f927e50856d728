#include "platform/host/BigEndian.h"
#include "tests/platform/imageio/Decoded.h"
#include "tests/support/Pictures.h"

namespace kestrine::testing {

namespace {

using Samples = std::vector<unsigned>;

/// Makes SGI files.
struct SGIFile {
    unsigned width = 2, height = 1, channels = 1, bytesPerSample = 1, dimensions = 3, isRunLength = 0;
    unsigned colorMap = 0;
    Bytes content = {}; ///< after the header

    Bytes make() const {
        Bytes file = {0x01, 0xDA};
        appendBigEndian(file, isRunLength, 1);
        appendBigEndian(file, bytesPerSample, 1);
        for (const unsigned field : {dimensions, width, height, channels})
            appendBigEndian(file, field, 2);
        file.resize(104);
        appendBigEndian(file, colorMap, 4);
        file.resize(512);
        file.insert(file.end(), content.begin(), content.end());
        return file;
    }
};

/// Tables of offsets and lengths, and the codes of rows.
Bytes codedRows(const std::vector<Bytes>& rows) {
    Bytes content;
    std::size_t offset = 512 + 8 * rows.size();
    for (const Bytes& row : rows) {
        appendBigEndian(content, offset, 4);
        offset += row.size();
    }
    for (const Bytes& row : rows)
        appendBigEndian(content, row.size(), 4);
    for (const Bytes& row : rows)
        content.insert(content.end(), row.begin(), row.end());
    return content;
}

Samples samplesOf(const SGIFile& file) {
    const PixelBuffer pixels = decodeSound(sgi::codec, file.make()).pixels;
    Samples samples;
    for (std::uint32_t y = 0; y < pixels.format.height; ++y)
        for (std::uint32_t x = 0; x < pixels.format.width; ++x)
            for (std::size_t c = 0; c < pixels.format.channels(); ++c)
                samples.push_back(sampleAt(pixels, x, y, c));
    return samples;
}

Reason reasonOf(const SGIFile& file) { return decode(sgi::codec, file.make()).failure().reason; }

} // namespace

TEST(SGIDecoder, theLowestRowIsStoredFirst) {
    EXPECT_EQ(samplesOf({.height = 2, .content = {1, 2, 3, 4}}), (Samples{3, 4, 1, 2}));
}

TEST(SGIDecoder, channelsFollowEachOther) {
    EXPECT_EQ(samplesOf({.channels = 3, .content = {1, 2, 3, 4, 5, 6}}), (Samples{1, 3, 5, 2, 4, 6}));
    EXPECT_EQ(samplesOf({.channels = 2, .content = {1, 2, 3, 4}}), (Samples{1, 3, 2, 4}));
    EXPECT_EQ(samplesOf({.width = 1, .channels = 4, .content = {1, 2, 3, 4}}), (Samples{1, 2, 3, 4}));
}

TEST(SGIDecoder, samplesMayHaveTwoBytes) {
    EXPECT_EQ(samplesOf({.bytesPerSample = 2, .content = {1, 2, 3, 4}}), (Samples{0x102, 0x304}));
}

TEST(SGIDecoder, fewerDimensionsMeanOneRowOrOneChannel) {
    EXPECT_EQ(samplesOf({.height = 9, .channels = 9, .dimensions = 1, .content = {1, 2}}), (Samples{1, 2}));
    EXPECT_EQ(samplesOf({.height = 2, .channels = 9, .dimensions = 2, .content = {1, 2, 3, 4}}),
              (Samples{3, 4, 1, 2}));
}

TEST(SGIDecoder, runLengthCodesAreRead) {
    EXPECT_EQ(samplesOf({.width = 5,
                         .height = 2,
                         .isRunLength = 1,
                         .content = codedRows({{0x83, 1, 2, 3, 2, 4, 0}, {5, 7, 0}})}),
              (Samples{7, 7, 7, 7, 7, 1, 2, 3, 4, 4}));
    EXPECT_EQ(samplesOf({.width = 3,
                         .bytesPerSample = 2,
                         .isRunLength = 1,
                         .content = codedRows({{0, 0x81, 1, 2, 0, 2, 3, 4, 0, 0}})}),
              (Samples{0x102, 0x304, 0x304}));
}

TEST(SGIDecoder, rowsMayShareCodesAndHaveWrongLengths) {
    Bytes content = codedRows({{3, 9, 0}, {}});
    content[7] = content[3];
    EXPECT_EQ(samplesOf({.height = 2, .isRunLength = 1, .content = content}), (Samples{9, 9, 9, 9}));
    EXPECT_EQ(samplesOf({.height = 2, .isRunLength = 1, .content = codedRows({{1, 9, 0, 5}, {2, 7, 0}})}),
              (Samples{7, 7, 9, 0}));
}

TEST(SGIDecoder, unknownKindsAreRefused) {
    EXPECT_EQ(reasonOf({.colorMap = 1, .content = {1, 2}}), Reason::unsupported);
    EXPECT_EQ(reasonOf({.channels = 5, .content = Bytes(10)}), Reason::unsupported);
    EXPECT_EQ(reasonOf({.channels = 0, .content = Bytes(10)}), Reason::unsupported);
    EXPECT_EQ(reasonOf({.width = 0, .content = Bytes(10)}), Reason::empty);
    EXPECT_EQ(reasonOf({.width = 65535, .height = 65535, .content = Bytes(10)}), Reason::tooLarge);
    for (const SGIFile& unknown :
         {SGIFile{.isRunLength = 2}, SGIFile{.bytesPerSample = 3}, SGIFile{.dimensions = 4}})
        EXPECT_FALSE(sgi::codec.recognises(unknown.make()));
}

TEST(SGIDecoder, cutOffFilesAreRefused) {
    for (const SGIFile& file :
         {SGIFile{.channels = 3, .content = {1, 2, 3, 4, 5, 6}},
          SGIFile{.height = 2, .isRunLength = 1, .content = codedRows({{0x82, 1, 2}, {2, 7}})}}) {
        const Bytes sound = file.make();
        for (std::size_t length = 12; length < sound.size(); ++length) {
            const auto decoded = decode(sgi::codec, Bytes(sound.begin(), sound.begin() + length));
            ASSERT_FALSE(decoded.ok()) << length;
            EXPECT_EQ(decoded.failure().reason, Reason::truncated) << length;
        }
    }
}

} // namespace kestrine::testing
