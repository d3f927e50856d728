#include "platform/foundation/NSNumber.h"
#include "platform/foundation/text/NSString.h"

#include <gtest/gtest.h>

namespace kestrine {
namespace {

struct UTF8Case {
    std::string bytes;
    std::u16string text;
};

TEST(NSString, validUTF8BecomesUTF16) {
    const UTF8Case cases[] = {
        {"", u""},
        {"plain", u"plain"},
        {"\x7f\xc2\x80\xdf\xbf", u"\u007f\u0080\u07ff"},
        {"\xe0\xa0\x80\xed\x9f\xbf\xee\x80\x80\xef\xbf\xbf", u"\u0800\ud7ff\ue000\uffff"},
        {"\xf0\x90\x80\x80\xf4\x8f\xbf\xbf", u"\U00010000\U0010ffff"},
    };
    for (const UTF8Case& row : cases) {
        EXPECT_EQ(NSString::fromUTF8(row.bytes).utf16(), row.text) << row.bytes;
        EXPECT_EQ(NSString(row.text).utf8(), row.bytes);
    }
}

TEST(NSString, everyByteThatIsNoValidUTF8BecomesOneLoneSurrogate) {
    const UTF8Case cases[] = {
        {"a\x80z", u"a\xdc80z"},                           // a continuation without a lead
        {"\xff\xfe", u"\xdcff\xdcfe"},                     // bytes that never occur
        {"\xc0\xaf\xc1\xbf", u"\xdcc0\xdcaf\xdcc1\xdcbf"}, // overlong, two bytes
        {"\xe0\x9f\xbf", u"\xdce0\xdc9f\xdcbf"},           // overlong, three bytes
        {"\xf0\x8f\xbf\xbf", u"\xdcf0\xdc8f\xdcbf\xdcbf"}, // overlong, four bytes
        {"\xed\xa0\x80", u"\xdced\xdca0\xdc80"},           // a surrogate
        {"\xf4\x90\x80\x80", u"\xdcf4\xdc90\xdc80\xdc80"}, // beyond U+10FFFF
        {"\xf8\x88\x80\x80\x80", u"\xdcf8\xdc88\xdc80\xdc80\xdc80"},
        {"\xe2\x82", u"\xdce2\xdc82"},     // cut off at the end
        {"\xe2\x82z", u"\xdce2\xdc82z"},   // cut off in the middle
        {"\xc3\xc3\xa9", u"\xdcc3\u00e9"}, // the next lead is seen
    };
    for (const UTF8Case& row : cases) {
        EXPECT_EQ(NSString::fromUTF8(row.bytes).utf16(), row.text);
        EXPECT_EQ(NSString::fromUTF8(row.bytes).utf8(), row.bytes);
    }
}

TEST(NSString, anyPairOfBytesComesBackUnchanged) {
    for (int first = 0; first < 256; first++)
        for (int second = 0; second < 256; second++) {
            const std::string bytes{static_cast<char>(first), static_cast<char>(second)};
            ASSERT_EQ(NSString::fromUTF8(bytes).utf8(), bytes);
        }
}

TEST(NSString, aLoneSurrogateThatStandsForNoByteIsWrittenAsReplacementCharacter) {
    EXPECT_EQ(NSString(u"a\xd800z").utf8(), "a\xef\xbf\xbdz");
    EXPECT_EQ(NSString(u"\xdc7f").utf8(), "\xef\xbf\xbd");
    EXPECT_EQ(NSString(u"\xdd00").utf8(), "\xef\xbf\xbd");
    EXPECT_EQ(NSString(u"\xd83d\xdca9").utf8(), "\xf0\x9f\x92\xa9");
}

TEST(NSString, copiesAreTheSameObjectAndEqualTextsAreNot) {
    const NSString text(u"text");
    const NSString copy = text;
    EXPECT_TRUE(copy.isSame(text));
    EXPECT_FALSE(NSString(u"text").isSame(text));
    EXPECT_EQ(NSString(u"text"), text);
}

TEST(NSString, anObjectIsAskedWhetherItIsText) {
    const NSString text(u"text");
    EXPECT_TRUE(NSString::fromObject(text.object())->isSame(text));
    EXPECT_FALSE(NSString::fromObject(nullptr));
    EXPECT_FALSE(NSString::fromObject(std::make_shared<NSNumber>(std::int32_t{1})));
}

TEST(NSString, piecesAreCutAtEveryOccurrenceOfTheSeparator) {
    using Pieces = std::vector<NSString>;
    EXPECT_EQ(NSString(u"a,b,,c").componentsSeparatedBy(u","), (Pieces{u"a", u"b", u"", u"c"}));
    EXPECT_EQ(NSString(u",a,").componentsSeparatedBy(u","), (Pieces{u"", u"a", u""}));
    EXPECT_EQ(NSString(u"aaa").componentsSeparatedBy(u"aa"), (Pieces{u"", u"a"}));
    EXPECT_EQ(NSString(u"aXb").componentsSeparatedBy(u"x"), (Pieces{u"aXb"}));
    EXPECT_EQ(NSString(u"").componentsSeparatedBy(u","), (Pieces{u""}));
    EXPECT_EQ(NSString(u"a,b").componentsSeparatedBy(u""), (Pieces{u"a,b"}));
}

TEST(NSString, upperAndLowerCaseFollowUnicode) {
    EXPECT_EQ(NSString(u"straße").uppercased(), NSString(u"STRASSE"));
    EXPECT_EQ(NSString(u"ÉÅ").lowercased(), NSString(u"éå"));
}

TEST(NSString, bytesThatAreNoTextKeepTheirValueInAnyCase) {
    const NSString text = NSString::fromUTF8("a\xff\xc3\xa9");
    EXPECT_EQ(text.uppercased().utf8().substr(0, 2), "A\xff");
    EXPECT_EQ(text.lowercased().utf8(), "a\xff\xc3\xa9");
}

TEST(NSString, aRangeBeyondTheEndIsRefused) {
    EXPECT_EQ(NSString(u"abc").substring({1, 2}), NSString(u"bc"));
    EXPECT_THROW(NSString(u"abc").substring({4, 0}), std::out_of_range);
}

} // namespace
} // namespace kestrine
