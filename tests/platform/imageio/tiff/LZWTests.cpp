#include "platform/imageio/tiff/LZW.h"

#include "tests/platform/imageio/tiff/LZWCodes.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <optional>
#include <random>

namespace kestrine::testing {

namespace {

constexpr unsigned clear = LZWCodes::clear, end = LZWCodes::end;

/// The first `count` bytes; nullopt when the codes are refused.
std::optional<Bytes> decodedLZW(ByteView codes, std::size_t count) {
    Bytes bytes(count);
    if (!tiff::LZWDecoder().decode(codes, bytes))
        return std::nullopt;
    return bytes;
}

std::optional<Bytes> decodedLZW(std::initializer_list<unsigned> codes, std::size_t count) {
    LZWCodes stored;
    stored.add(codes);
    return decodedLZW(stored.bytes(), count);
}

/// Bytes below `values`, each `run` times on average.
Bytes noise(std::size_t count, unsigned values, unsigned run) {
    std::mt19937 random(values + run);
    Bytes bytes(count);
    std::uint8_t byte = 0;
    for (std::uint8_t& next : bytes)
        next = byte = random() % run == 0 ? static_cast<std::uint8_t>(random() % values) : byte;
    return bytes;
}

} // namespace

TEST(TIFFLZW, codesBecomeTheirStrings) {
    EXPECT_EQ(decodedLZW({clear, 'a', 'b', 'c', 258, 260, end}, 7),
              (Bytes{'a', 'b', 'c', 'a', 'b', 'c', 'a'}));
    EXPECT_EQ(decodedLZW({clear}, 0), std::nullopt) << "no byte after it";
    EXPECT_EQ(decodedLZW({clear, 'a'}, 0), Bytes{});
}

TEST(TIFFLZW, aCodeMayStandForTheStringThatItCompletes) {
    EXPECT_EQ(decodedLZW({clear, 'a', 258, 259, 260}, 10), Bytes(10, 'a'));
    EXPECT_EQ(decodedLZW({clear, 'a', 'b', 258, 260}, 7), (Bytes{'a', 'b', 'a', 'b', 'a', 'b', 'a'}));
}

TEST(TIFFLZW, everyLengthOfStringsAndOfTheResultIsRight) {
    LZWCodes codes;
    const Bytes expected = noise(9000, 3, 40);
    codes.addEncoded(expected);
    for (std::size_t count = 0; count < expected.size(); count += count < 300 ? 1 : 97)
        ASSERT_EQ(decodedLZW(codes.bytes(), count),
                  Bytes(expected.begin(), expected.begin() + static_cast<std::ptrdiff_t>(count)))
            << count;
}

TEST(TIFFLZW, bytesOfManyKindsComeBack) {
    for (const unsigned values : {1U, 2U, 17U, 256U})
        for (const unsigned run : {1U, 300U})
            for (const std::size_t mostStrings : {259, 300, 511, 512, 1023, 2047, 4094, 4095, 4096}) {
                const Bytes expected = noise(14'000, values, run);
                LZWCodes codes;
                codes.addEncoded(expected, mostStrings);
                ASSERT_EQ(decodedLZW(codes.bytes(), expected.size()), expected)
                    << values << " values, runs of " << run << ", " << mostStrings << " strings";
            }
}

TEST(TIFFLZW, severalClearCodesInARowAreOne) {
    EXPECT_EQ(decodedLZW({clear, clear, clear, 'a', 'b', clear, clear, 'c', 'd', 258}, 6),
              (Bytes{'a', 'b', 'c', 'd', 'c', 'd'}));
}

TEST(TIFFLZW, whatFollowsTheLastByteIsIgnored) {
    EXPECT_EQ(decodedLZW({clear, 'a', 'b', 258, 300, 301}, 3), (Bytes{'a', 'b', 'a'}));
}

TEST(TIFFLZW, irregularCodesAreRefused) {
    struct Case {
        std::initializer_list<unsigned> codes;
        std::size_t count;
        const char* what;
    };
    for (const Case& c : {Case{{}, 1, "no codes"},
                          {{'a', 'b'}, 1, "no clear code"},
                          {{clear, 258}, 1, "a string in an empty table"},
                          {{clear, end}, 1, "an end without bytes"},
                          {{clear, 'a', end, 'b'}, 2, "an early end"},
                          {{clear, 'a', 'b', 260}, 9, "a string that does not exist yet"},
                          {{clear, 'a', 'b'}, 3, "too few codes"}})
        EXPECT_EQ(decodedLZW(c.codes, c.count), std::nullopt) << c.what;
}

TEST(TIFFLZW, aFullTableMustBeCleared) {
    LZWCodes codes;
    const Bytes random = noise(5000, 256, 1);
    codes.addEncoded(random, 5000);
    EXPECT_EQ(decodedLZW(codes.bytes(), random.size()), std::nullopt);
    EXPECT_TRUE(decodedLZW(codes.bytes(), 3800));
}

TEST(TIFFLZW, aDecoderCanBeUsedAgain) {
    tiff::LZWDecoder decoder;
    Bytes bytes(4000);
    for (const unsigned values : {256U, 4U, 100U}) {
        LZWCodes codes;
        const Bytes expected = noise(bytes.size(), values, 3);
        codes.addEncoded(expected);
        EXPECT_TRUE(decoder.decode(codes.bytes(), bytes));
        EXPECT_EQ(bytes, expected);
        EXPECT_FALSE(decoder.decode(ByteView(codes.bytes()).first(codes.bytes().size() / 2), bytes));
    }
}

} // namespace kestrine::testing
