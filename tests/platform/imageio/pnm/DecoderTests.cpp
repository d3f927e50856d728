#include "tests/platform/imageio/Decoded.h"
#include "tests/support/Pictures.h"
#include "tests/support/TemporaryFolder.h"

namespace kestrine::testing {

namespace {

using namespace std::string_literals;

/// The samples of a file; empty if it is refused.
std::vector<unsigned> samplesOf(const std::string& file) {
    const Result<Decoded> decoded = decode(pnm::codec, bytesOf(file));
    std::vector<unsigned> samples;
    if (!decoded)
        return samples;
    const RowFormat& format = decoded->pixels.format;
    for (std::uint32_t y = 0; y < format.height; ++y)
        for (std::uint32_t x = 0; x < format.width; ++x)
            for (std::size_t c = 0; c < format.channels(); ++c)
                samples.push_back(sampleAt(decoded->pixels, x, y, c));
    return samples;
}

RowFormat formatOf(const std::string& file) { return decodeSound(pnm::codec, bytesOf(file)).frame().format; }

Reason reasonOf(const std::string& file) { return decode(pnm::codec, bytesOf(file)).failure().reason; }

/// An arbitrary map of 2 x 1 pixels.
std::string mapOf(const std::string& type, int depth, int largest, const std::string& samples) {
    return "P7\nWIDTH 2\nHEIGHT 1\nDEPTH " + std::to_string(depth) + "\nMAXVAL " + std::to_string(largest)
           + (type.empty() ? "" : "\nTUPLTYPE " + type) + "\nENDHDR\n" + samples;
}

using Samples = std::vector<unsigned>;

} // namespace

TEST(PNMDecoder, everyVariantIsRead) {
    const struct {
        const char* what;
        std::string file;
        RowFormat format;
        Samples samples;
    } cases[] = {
        {"text bitmap", "P1 3 2 1 0 1\n0 0 1", {3, 2, ColorModel::gray}, {0, 255, 0, 255, 255, 0}},
        {"text greymap", "P2 3 1 255 0 17 255", {3, 1, ColorModel::gray}, {0, 17, 255}},
        {"text pixmap", "P3 1 2 255 1 2 3\n4 5 6\n", {1, 2}, {1, 2, 3, 4, 5, 6}},
        {"bitmap", "P4 3 2\n\xA0\x3F", {3, 2, ColorModel::gray}, {0, 255, 0, 255, 255, 0}},
        {"greymap", "P5 3 1 255\n\1\2\3", {3, 1, ColorModel::gray}, {1, 2, 3}},
        {"pixmap", "P6 1 2 255\n\1\2\3\4\5\6", {1, 2}, {1, 2, 3, 4, 5, 6}},
    };
    for (const auto& [what, file, format, samples] : cases) {
        EXPECT_EQ(formatOf(file), format) << what;
        EXPECT_EQ(samplesOf(file), samples) << what;
    }
}

TEST(PNMDecoder, everyTypeOfArbitraryMapIsRead) {
    EXPECT_EQ(samplesOf(mapOf("BLACKANDWHITE", 1, 1, "\0\1"s)), (Samples{0, 255}));
    EXPECT_EQ(samplesOf(mapOf("BLACKANDWHITE_ALPHA", 2, 1, "\0\1\1\0"s)), (Samples{0, 255, 255, 0}));
    EXPECT_EQ(samplesOf(mapOf("GRAYSCALE", 1, 255, "\5\6")), (Samples{5, 6}));
    EXPECT_EQ(samplesOf(mapOf("GRAYSCALE_ALPHA", 2, 255, "\5\6\7\x8")), (Samples{5, 6, 7, 8}));
    EXPECT_EQ(samplesOf(mapOf("RGB", 3, 255, "\1\2\3\4\5\6")), (Samples{1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(samplesOf(mapOf("RGB_ALPHA", 4, 255, "\1\2\3\4\5\6\7\x8")), (Samples{1, 2, 3, 4, 5, 6, 7, 8}));
    EXPECT_EQ(formatOf(mapOf("GRAYSCALE_ALPHA", 2, 255, "\5\6\7\x8")),
              (RowFormat{2, 1, ColorModel::gray, true}));
    EXPECT_EQ(formatOf(mapOf("RGB_ALPHA", 4, 255, "12345678")), (RowFormat{2, 1, ColorModel::rgb, true}));
}

TEST(PNMDecoder, anArbitraryMapWithoutATypeHasThatOfItsDepth) {
    EXPECT_EQ(formatOf(mapOf("", 2, 255, "1234")), (RowFormat{2, 1, ColorModel::gray, true}));
    EXPECT_EQ(formatOf(mapOf("", 4, 255, "12345678")), (RowFormat{2, 1, ColorModel::rgb, true}));
    EXPECT_EQ(reasonOf(mapOf("", 5, 255, "1234567890")), Reason::unsupported);
}

TEST(PNMDecoder, anUnknownOrUnsuitableTypeIsRefused) {
    EXPECT_EQ(reasonOf(mapOf("INFRARED", 1, 255, "12")), Reason::unsupported);
    EXPECT_EQ(reasonOf(mapOf("RGB", 4, 255, "12345678")), Reason::unsupported);
}

TEST(PNMDecoder, samplesAreScaledToTheFullRangeAndRounded) {
    EXPECT_EQ(samplesOf("P2 4 1 3 0 1 2 3"), (Samples{0, 85, 170, 255}));
    EXPECT_EQ(samplesOf("P2 4 1 100 0 1 50 100"), (Samples{0, 3, 128, 255}));
    EXPECT_EQ(samplesOf("P5 3 1 127\n\0\x40\x7F"s), (Samples{0, 129, 255}));
    EXPECT_EQ(samplesOf("P5 2 1 1\n\0\1"s), (Samples{0, 255}));
}

TEST(PNMDecoder, samplesAbove255Have16Bits) {
    EXPECT_EQ(samplesOf("P5 2 1 65535\n\x12\x34\xFF\xFE"), (Samples{0x1234, 0xFFFE}));
    EXPECT_EQ(samplesOf("P2 4 1 256 0 1 128 256"), (Samples{0, 256, 32768, 65535}));
    EXPECT_EQ(samplesOf("P6 1 1 1023\n\0\0\x02\0\x03\xFF"s), (Samples{0, 32800, 65535}));
    EXPECT_EQ(formatOf("P2 1 1 256 1").depth, SampleDepth::bits16);
    EXPECT_EQ(formatOf("P2 1 1 255 1").depth, SampleDepth::bits8);
}

TEST(PNMDecoder, samplesAboveTheLargestCountAsTheLargest) {
    EXPECT_EQ(samplesOf("P5 2 1 100\n\x64\xC8"), (Samples{255, 255}));
    EXPECT_EQ(samplesOf("P2 2 1 1000 1000 4000000000"), (Samples{65535, 65535}));
}

TEST(PNMDecoder, commentsAreAllowedWhereWhiteSpaceIs) {
    const Samples expected = {1, 2};
    for (const char* file :
         {"P5#a\n2 1 255\n\1\2", "P5 # a\n# b\n2 # c\n1#d\n255\n\1\2", "P5\n2 1 255#e\n\1\2",
          "P5\r\n2\t1\v255\f\1\2", "P2 2 1 255 # e\n1 # f\n2", "P2\n2 1 255\n1\n2#g"})
        EXPECT_EQ(samplesOf(file), expected) << file;
    EXPECT_EQ(samplesOf("P7\n#a\nWIDTH 2\n# b\nHEIGHT\t1\n\nMAXVAL 255\nDEPTH 1 \nENDHDR\n\1\2"), expected);
}

TEST(PNMDecoder, onlyOneCharacterSeparatesTheHeaderFromTheSamples) {
    EXPECT_EQ(samplesOf("P5 2 1 255\n\n1"), (Samples{'\n', '1'}));
    EXPECT_EQ(samplesOf("P5 2 1 255 #1"), (Samples{'#', '1'}));
}

TEST(PNMDecoder, theDigitsOfATextBitmapNeedNoSeparators) {
    EXPECT_EQ(samplesOf("P1\n4 2\n0110 1#x\n001"), (Samples{255, 0, 0, 255, 0, 255, 255, 0}));
}

TEST(PNMDecoder, rowsOfABitmapBeginOnWholeBytes) {
    EXPECT_EQ(samplesOf("P4 9 2\n\xFF\x7F\0\x80"s),
              (Samples{0, 0, 0, 0, 0, 0, 0, 0, 255, 255, 255, 255, 255, 255, 255, 255, 255, 0}));
}

TEST(PNMDecoder, aFileThatEndsTooEarlyIsRefused) {
    for (const std::string& file :
         {"P1 3 2 1 0 1 0 0 1"s, "P2 3 1 255 0 17 5"s, "P3 1 1 255 1 2 3"s, "P4 9 2\n1234"s,
          "P5 3 1 255\n123"s, "P6 1 2 999\n123456789012"s, mapOf("RGB", 3, 255, "123456")}) {
        EXPECT_FALSE(samplesOf(file).empty()) << file;
        for (std::size_t length = 0; length < file.size(); ++length)
            EXPECT_TRUE(samplesOf(file.substr(0, length)).empty()) << file.substr(0, length);
    }
}

TEST(PNMDecoder, invalidHeadersAreRefused) {
    for (const char* file :
         {"P5 x 1 255\n1", "P5 1 -1 255\n1", "P5 1 1 0\n1", "P5 1 1 65536\n11", "P2 1 1 255 x", "P1 1 1 2",
          "P7\nWIDTH 1\nHEIGHT 1\nDEPTH 1\nMAXVAL 0\nENDHDR\n1", "P7\nWIDTH 1\nCOLOUR 3\nENDHDR\n1"})
        EXPECT_EQ(reasonOf(file), Reason::malformed) << file;
    const std::string longLine = "RGB" + std::string(300, ' ');
    EXPECT_EQ(reasonOf(mapOf(longLine, 3, 255, "123456")), Reason::malformed);
}

TEST(PNMDecoder, impossibleSizesAreRefused) {
    for (const char* file :
         {"P5 1000001 1 255\n1", "P5 1000000 1000000 255\n1", "P5 99999999999999999999 1 255\n1"})
        EXPECT_EQ(reasonOf(file), Reason::tooLarge) << file;
    for (const char* file :
         {"P5 0 1 255\n1", "P5 1 0 255\n1", "P7\nWIDTH x\nHEIGHT 1\nDEPTH 1\nMAXVAL 1\nENDHDR\n1"})
        EXPECT_EQ(reasonOf(file), Reason::empty) << file;
}

TEST(PNMDecoder, largePicturesAreDecoded) {
    const PixelBuffer photo = makePhoto({700, 500});
    const std::string file = "P6 700 500 255\n" + std::string(photo.bytes.begin(), photo.bytes.end());
    EXPECT_TRUE(samePicture(decodeSound(pnm::codec, bytesOf(file)).pixels, photo));
}

TEST(PNMDecoder, onlyPortableMapsAreRecognised) {
    for (const char* head : {"P1\n1", "P6 3", "P5#", "P7\nW"})
        EXPECT_TRUE(pnm::codec.recognises(bytesOf(head))) << head;
    for (const char* head : {"", "P", "P5", "P0 1", "P8 1", "P55", "P7 332", "p5 1", "BM\n1"})
        EXPECT_FALSE(pnm::codec.recognises(bytesOf(head))) << head;
}

} // namespace kestrine::testing
