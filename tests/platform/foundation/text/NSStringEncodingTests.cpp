#include "platform/foundation/text/NSStringEncoding.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace kestrine {
namespace {

struct Sample {
    NSStringEncoding encoding;
    std::string_view bytes;
    std::optional<const char16_t*> text; // empty if the bytes are malformed
};

void expectDecoded(std::initializer_list<Sample> samples) {
    for (const Sample& sample : samples) {
        const OptionalString text = decodedText(testing::bytesOf(sample.bytes), sample.encoding);
        const OptionalString expected = sample.text ? OptionalString(*sample.text) : std::nullopt;
        EXPECT_EQ(text, expected) << sample.encoding << ": "
                                  << ::testing::PrintToString(testing::bytesOf(sample.bytes));
    }
}

constexpr std::nullopt_t malformed = std::nullopt;

TEST(StringEncoding, UTF8AcceptsOnlyShortestForms) {
    expectDecoded({{4, "", u""},
                   {4, "a\xc3\xa9\xe3\x81\x82\xf0\x9f\x98\x80", u"aéあ\U0001f600"},
                   {4, "\xef\xbb\xbfx", u"x"},
                   {4, "x\xef\xbb\xbf", u"x\xfeff"},
                   {4, "\xc3", malformed},
                   {4, "\xc0\x80", malformed},
                   {4, "\xed\xa0\x80", malformed},
                   {4, "\xf4\x90\x80\x80", malformed},
                   {4, "a\xff", malformed}});
}

TEST(StringEncoding, UTF16FollowsItsByteOrderMarkAndIsBigEndianByDefault) {
    using namespace std::string_view_literals;
    expectDecoded({{10, "", u""},
                   {10, "\xfe\xff\x30\x42"sv, u"あ"},
                   {10, "\xff\xfe\x42\x30"sv, u"あ"},
                   {10, "\x30\x42\0a"sv, u"あa"},
                   {10, "\xd8\x3d\xde\x00"sv, u"\U0001f600"},
                   {10, "\xd8\x3d\0a"sv, malformed},
                   {10, "\xde\x00\xd8\x3d"sv, malformed},
                   {10, "\xd8\x3d"sv, malformed},
                   {10, "\0a\0"sv, malformed}});
}

TEST(StringEncoding, nonLossyASCIIHasThreeEscapes) {
    expectDecoded({{7, "a\\\\b", u"a\\b"},
                   {7, "\\u3042\\351", u"あé"},
                   {7, "\\uD83D\\ude00", u"\U0001f600"},
                   {7, "\\u304", malformed},
                   {7, "\\u30g2", malformed},
                   {7, "\\400", malformed},
                   {7, "\\38", malformed},
                   {7, "\\n", malformed},
                   {7, "\\", malformed},
                   {7, "\x80", malformed}});
}

TEST(StringEncoding, ShiftJISAcceptsOnlyCompleteCharacters) {
    expectDecoded({{8, "a\\~\x82\xa0\x93\xfa\xb1", u"a\\~あ日ｱ"},
                   {8, "\x87\x40\xfa\x40\x81\x60", u"①ⅰ～"},
                   {8, "\x1a\x1c\x7f", u"\x1a\x1c\x7f"},
                   {8, "\x82", malformed},
                   {8, "\x82 ", malformed},
                   {8, "\x80", malformed},
                   {8, "\xa0", malformed},
                   {8, "\xfd", malformed},
                   {8, "\xff", malformed},
                   {8, "\x85\x40", malformed}});
}

TEST(StringEncoding, EUCJPAcceptsOnlyCompleteCharacters) {
    expectDecoded({{3, "a\xa4\xa2\x8e\xb1\x8f\xb0\xa1", u"aあｱ丂"},
                   {3, "\xc6\xfc\xcb\xdc", u"日本"},
                   {3, "\xa4", malformed},
                   {3, "\xa4\x22", malformed},
                   {3, "\x80", malformed},
                   {3, "\x9f", malformed},
                   {3, "\x8e\xe0", malformed},
                   {3, "\x8f\xb0", malformed},
                   {3, "\xa9\xa1", malformed}});
}

TEST(StringEncoding, ISO2022JPAcceptsSevenBitBytesAndKnownEscapes) {
    expectDecoded({{21, "abc", u"abc"},
                   {21, "\x1b$B$\"F|\x1b(Bz", u"あ日z"},
                   {21, "\x1b$@$\"\x1b(J\\", u"あ¥"},
                   {21, "\x1b$B$", malformed},
                   {21, "\x1b$B$ \x1b(B", malformed},
                   {21, "\x1b[0m", malformed},
                   {21, "\x1b", malformed},
                   {21, "\xb1", malformed}});
}

TEST(StringEncoding, singleByteEncodingsAcceptOnlyAssignedBytes) {
    expectDecoded({{30, "caf\x8e \xdb\xf0", u"café €\xf8ff"},
                   {11, "\xcf\xf0\xe8", u"При"},
                   {11, "\x98", malformed},
                   {12, "\x80\xe9\x93", u"€é“"},
                   {12, "\x81", malformed},
                   {13, "\xe1\xe2", u"αβ"},
                   {13, "\xaa", malformed},
                   {13, "\xd2", malformed},
                   {14, "\xfd\xd0", u"ıĞ"},
                   {14, "\x8e", malformed},
                   {15, "\xb3\x9c", u"łś"},
                   {15, "\x83", malformed},
                   {5, "\xe9\x80", u"é\x80"}});
}

TEST(StringEncoding, everyByteEncodingKeepsASCII) {
    std::string bytes;
    for (char c = 0; c < 0x7f; c++)
        if (c != 0x1b && c != 0x0e && c != 0x0f && c != '\\')
            bytes += c;
    bytes += '\x7f';
    for (const NSStringEncoding encoding : {3, 4, 5, 7, 8, 11, 12, 13, 14, 15, 21, 30}) {
        const std::u16string expected(bytes.begin(), bytes.end());
        EXPECT_EQ(decodedText(testing::bytesOf(bytes), encoding), NSString(expected)) << encoding;
    }
}

TEST(StringEncoding, anUnknownEncodingGivesNil) {
    expectDecoded({{2565, "a", malformed}, {2565, "", malformed}, {0, "a", malformed}, {9, "a", malformed}});
}

} // namespace
} // namespace kestrine
