#include "_MyClasses/Category/StringUtility.h"
#include "platform/foundation/NSException.h"
#include "platform/foundation/text/NSParagraphStyle.h"
#include "tests/_MyClasses/StringUtilityTables.h"

#include <limits>

namespace kestrine {
namespace {

using namespace StringUtility;

class StringUtilityClassification : public testing::TextTables {};

NSString repeated(std::size_t count, char16_t unit) { return std::u16string(count, unit); }

NSString byteSize(NSNumber::Value value) { return stringWithByteSize(NSNumber(value)); }

// Markup and line ends

TEST_F(StringUtilityClassification, tagsAreRemovedAndEntitiesReplaced) {
    EXPECT_EQ(removeAllHTMLTag(u"a<b>c</b>d &amp; e"), NSString(u"acd & e"));
    EXPECT_EQ(removeAllHTMLTag(u"<p>x<p>y"), NSString(u"xy"));
    EXPECT_EQ(removeAllHTMLTag(u"<a<b>c"), NSString(u"c"));
}

TEST_F(StringUtilityClassification, aStringWithoutTagsIsUnchanged) {
    const NSString text(u"a &amp; b > c");
    EXPECT_TRUE(removeAllHTMLTag(text).isSame(text));
}

TEST_F(StringUtilityClassification, anEmptyTagOrOneWithoutEndStopsTheRemoval) {
    EXPECT_EQ(removeAllHTMLTag(u"<i>a<>b<u>c&lt;"), NSString(u"a<>b<u>c<"));
    EXPECT_EQ(removeAllHTMLTag(u"a>b<c &quot;"), NSString(u"a>b<c \""));
}

TEST_F(StringUtilityClassification, aTagThatARemovalCreatesIsRemovedToo) {
    EXPECT_EQ(removeAllHTMLTag(u"<b><<b>i>x"), NSString(u"x"));
}

TEST_F(StringUtilityClassification, tagsThatAffectEachOtherAreRemovedOneByOne) {
    std::uint32_t state = 1;
    for (int round = 0; round < 20000; round++) {
        std::u16string text;
        for (int i = 0; i < 14; i++) {
            state = state * 1664525 + 1013904223;
            text += u"<<>>ab"[(state >> 16) % 6];
        }
        NSString expected(text);
        for (OptionalString tag; (tag = substringFrom(expected, u"<", u">"));)
            expected = *removeString(expected, u"<" + tag->utf16() + u">");
        ASSERT_EQ(removeAllHTMLTag(text), expected) << NSString(text).utf8();
    }
}

TEST_F(StringUtilityClassification, entitiesAreReplacedInTheirOrder) {
    EXPECT_EQ(arrangeHTMLString(u"&amp;lt;"), NSString(u"&lt;"));
    EXPECT_EQ(arrangeHTMLString(u"&amp;quot;&amp;nbsp;"), NSString(u"\" "));
    EXPECT_EQ(arrangeHTMLString(u"&lt;&gt;&amp;&quot;&nbsp;&LT;"), NSString(u"<>&\" &LT;"));
}

TEST_F(StringUtilityClassification, lineEndsBecomeLineFeeds) {
    EXPECT_EQ(replaceReturnCode(u"a\r\nb\rc\nd\r\r\n"), NSString(u"a\nb\nc\nd\n\n"));
}

// Kinds of text

TEST_F(StringUtilityClassification, aNumberConsistsOfDigitsAndCanBeEmpty) {
    EXPECT_TRUE(isNumberString(u""));
    EXPECT_TRUE(isNumberString(u"0123456789"));
    for (const char16_t* text : {u"12a", u"-1", u"1.5", u"１", u" "})
        EXPECT_FALSE(isNumberString(text)) << NSString(text).utf8();
}

TEST_F(StringUtilityClassification, theCharacterSetsComeFromTheTable) {
    NSBundle& bundle =
        given("alphabetCharacterSet = abc; \"japaneseCharacterset\" = \"あ\xf0\x9b\x80\x80\";");
    EXPECT_TRUE(isAlphanumericString(u"cab", bundle));
    EXPECT_FALSE(isAlphanumericString(u"cabd", bundle));
    EXPECT_TRUE(isHiraganaKatanakaString(u"\U0001b000あ", bundle));
    EXPECT_FALSE(isHiraganaKatanakaString(u"あa", bundle));
    EXPECT_FALSE(isHiraganaKatanakaString(u"\xd82c", bundle)) << "half of a member is not a member";
    EXPECT_FALSE(isHiraganaKatanakaString(u"\xdc00", bundle)) << "nor is the other half";
    EXPECT_TRUE(isHiraganaKatanakaAlphabetString(u"あa", bundle));
    EXPECT_FALSE(isHiraganaKatanakaAlphabetString(u"あaい", bundle));
}

TEST_F(StringUtilityClassification, withoutATableTheKeysLettersAreTheSet) {
    EXPECT_TRUE(isAlphanumericString(u"betaChar", withoutTable()));
    EXPECT_FALSE(isAlphanumericString(u"xyz", withoutTable()));
    EXPECT_TRUE(isHiraganaKatanakaString(u"japan", withoutTable()));
    EXPECT_TRUE(isAlphanumericString(u"", withoutTable()));
}

TEST_F(StringUtilityClassification, theShippedSetsHoldLettersDigitsAndKana) {
    for (const char* language : {"en_US.UTF-8", "ja_JP.UTF-8"}) {
        NSBundle& bundle = shipped(language);
        EXPECT_TRUE(isAlphanumericString(u"AZaz09", bundle));
        EXPECT_FALSE(isAlphanumericString(u"a b", bundle));
        EXPECT_TRUE(isHiraganaKatanakaString(u"ひらがなコーヒーﾊﾟゞ", bundle));
        EXPECT_FALSE(isHiraganaKatanakaString(u"漢字", bundle));
        EXPECT_TRUE(isHiraganaKatanakaAlphabetString(u"カメラ2", bundle));
        EXPECT_FALSE(isHiraganaKatanakaAlphabetString(u"カメラ。", bundle));
    }
}

// Escaping

TEST_F(StringUtilityClassification, aStringIsEscapedForAStringsFile) {
    struct Case {
        const char16_t* text;
        const char16_t* escaped;
    };
    const Case cases[] = {
        {uR"(say "hi")", uR"(say \"hi\")"},
        {uR"(say \"hi\")", uR"(say \"hi\")"},
        {uR"(a\\b)", uR"(a\b)"},
        {uR"(a\;b;c)", u"a;b;c"},
        {uR"(a\\\\nb)", u"a\nb"},
        {uR"(a\nb)", uR"(a\nb)"},
        {uR"(\\")", uR"(\")"},
        {u"", u""},
    };
    for (const Case& c : cases)
        EXPECT_EQ(escapeForStringsFile(c.text), NSString(c.escaped)) << NSString(c.text).utf8();
}

TEST_F(StringUtilityClassification, charactersThatAURLCannotContainAreEscapedAsUTF8) {
    EXPECT_EQ(escapedStringWithPercent(u"a b"), NSString(u"a%20b"));
    EXPECT_EQ(escapedStringWithPercent(u"é\U0001f600"), NSString(u"%C3%A9%F0%9F%98%80"));
    EXPECT_EQ(escapedStringWithPercent(u"100% \"x\""), NSString(u"100%25%20%22x%22"));
    EXPECT_EQ(escapedStringWithPercent(u"<>#[]{}|\\^`\x7f\n"),
              NSString(u"%3C%3E%23%5B%5D%7B%7D%7C%5C%5E%60%7F%0A"));
    EXPECT_EQ(escapedStringWithPercent(NSString::fromUTF8("a\xff z")), NSString(u"a%FF%20z"));
}

TEST_F(StringUtilityClassification, aStringWithOnlyPercentSignsToEscapeIsUnchanged) {
    for (const char16_t* text : {u"", u"a%20b", u"100%", u"http://h/a;b?c=d&e=f+g,$@:-_.!~*'()", u"azAZ09"}) {
        const NSString receiver(text);
        EXPECT_TRUE(escapedStringWithPercent(receiver).isSame(receiver)) << receiver.utf8();
    }
}

TEST_F(StringUtilityClassification, separatorsAreEscapedAfterTheThirdCharacter) {
    struct Case {
        const char16_t* text;
        const char16_t* escaped;
    };
    const Case cases[] = {
        {u"abc,d,e", u"abc\\,d\\,e"}, {u"ab,c", u"ab,c"}, {u"a,b,c", u"a,b\\,c"}, {u"abc\\,d", u"abc\\,d"},
        {u",,,,", u",,,\\,"},         {u"", u""},         {u"abcdef", u"abcdef"}, {u"abc,", u"abc\\,"},
    };
    for (const Case& c : cases)
        EXPECT_EQ(stringByAppendingBackSlashForCharacter(c.text, u","), NSString(c.escaped))
            << NSString(c.text).utf8();
    EXPECT_EQ(stringByAppendingBackSlashForCharacter(u"abcd", u""), NSString(u"abcd"));
}

// Showing text

TEST_F(StringUtilityClassification, aByteCountBecomesTheLargestUnitItExceeds) {
    EXPECT_EQ(byteSize(1024), NSString(u"1024B"));
    EXPECT_EQ(byteSize(1025), NSString(u"1.0KB"));
    EXPECT_EQ(byteSize(1536), NSString(u"1.5KB"));
    EXPECT_EQ(byteSize(20480), NSString(u"20KB"));
    EXPECT_EQ(byteSize(5), NSString(u"5.0B"));
    EXPECT_EQ(byteSize(10), NSString(u"10B"));
    EXPECT_EQ(byteSize(1048576), NSString(u"1024KB"));
    EXPECT_EQ(byteSize(1572864), NSString(u"1.5MB"));
    EXPECT_EQ(byteSize(std::int64_t{1} << 30), NSString(u"1024MB"));
    EXPECT_EQ(byteSize((std::int64_t{5} << 30)), NSString(u"5.0GB"));
    EXPECT_EQ(byteSize((std::int64_t{1} << 40)), NSString(u"1024GB"));
    EXPECT_EQ(byteSize((std::int64_t{1} << 40) + 1), NSString(u"1.0TB"));
}

TEST_F(StringUtilityClassification, byteCountsAreRoundedLikePrintf) {
    EXPECT_EQ(byteSize(9.96), NSString(u"10.0B")) << "one digit, as 9.96 is below 10";
    EXPECT_EQ(byteSize(0.25), NSString(u"0.2B")) << "halves go to the even digit";
    EXPECT_EQ(byteSize(10.5), NSString(u"10B"));
    EXPECT_EQ(byteSize(-5), NSString(u"-5.0B"));
    EXPECT_EQ(byteSize(0), NSString(u"0.0B"));
}

TEST_F(StringUtilityClassification, anyDoubleCanBeAByteCount) {
    using Limits = std::numeric_limits<double>;
    EXPECT_EQ(byteSize(Limits::quiet_NaN()), NSString(u"nanB"));
    EXPECT_EQ(byteSize(Limits::infinity()), NSString(u"infTB"));
    EXPECT_EQ(byteSize(-Limits::infinity()), NSString(u"-infB"));
    EXPECT_EQ(byteSize(Limits::max()).length(), 299u) << "297 digits and the unit";
    EXPECT_EQ(byteSize(Limits::lowest()).length(), 313u)
        << "a minus, 309 digits, one after the decimal point";
}

TEST_F(StringUtilityClassification, aLineBreakModeAppliesToTheWholeString) {
    const NSAttributedString text = lineBreakedString(u"abc", NSLineBreakByTruncatingMiddle);
    NSRange range;
    const Object value = text.attribute(NSParagraphStyleAttributeName, 1, &range);
    const auto* const style = dynamic_cast<const NSParagraphStyle*>(value.get());
    ASSERT_NE(style, nullptr);
    EXPECT_EQ(style->lineBreakMode(), NSLineBreakByTruncatingMiddle);
    EXPECT_EQ(range, (NSRange{0, 3}));
    EXPECT_EQ(text.string(), NSString(u"abc"));
}

TEST_F(StringUtilityClassification, anEmptyStringHasNoStyle) {
    EXPECT_EQ(lineBreakedString(u"", NSLineBreakByClipping).length(), 0u);
}

TEST_F(StringUtilityClassification, aShortStringIsNotDivided) {
    EXPECT_EQ(dividePointUpToLength(u"a.b", 3, withoutTable()), 3u);
    EXPECT_EQ(dividePointUpToLength(u"", 0, withoutTable()), 0u);
}

TEST_F(StringUtilityClassification, aLongStringIsDividedAfterAFullStopWhenTheLineFeedIsTooEarly) {
    std::u16string text(500, u'x');
    text[99] = u'\n';
    text[250] = u'.';
    EXPECT_EQ(dividePointUpToLength(text, 300, withoutTable()), 251u);
    text[100] = u'\n';
    EXPECT_EQ(dividePointUpToLength(text, 300, withoutTable()), 101u) << "the stretch begins at 100";
    text[150] = u'\n';
    EXPECT_EQ(dividePointUpToLength(text, 300, withoutTable()), 151u) << "the last line feed counts";
}

TEST_F(StringUtilityClassification, theSearchedRangeEndsBeforeTheMaximum) {
    std::u16string text(500, u'x');
    text[300] = u'\n';
    EXPECT_EQ(dividePointUpToLength(text, 300, withoutTable()), 300u);
    text[299] = u'.';
    EXPECT_EQ(dividePointUpToLength(text, 300, withoutTable()), 300u);
    text[298] = u'\n';
    EXPECT_EQ(dividePointUpToLength(text, 300, withoutTable()), 299u);
}

TEST_F(StringUtilityClassification, aSmallMaximumSearchesFromTheStart) {
    EXPECT_EQ(dividePointUpToLength(u"a\nbcdef", 4, withoutTable()), 2u);
    EXPECT_EQ(dividePointUpToLength(u"\nabcdef", 1, withoutTable()), 1u);
    EXPECT_EQ(dividePointUpToLength(repeated(50, u'x'), 20, withoutTable()), 20u);
    EXPECT_EQ(dividePointUpToLength(u"abc", 0, withoutTable()), 0u);
}

TEST_F(StringUtilityClassification, theLocalizedCommaIsUsedLastIfItIsOneCharacter) {
    EXPECT_EQ(dividePointUpToLength(u"a;bcdef", 5, given("\"Touten Character\" = \";\";")), 2u);
    EXPECT_EQ(dividePointUpToLength(u"a.b;cdef", 5, given("\"Touten Character\" = \";\";")), 2u);
    EXPECT_EQ(dividePointUpToLength(u"a;bcdef", 5, given("\"Touten Character\" = \";b\";")), 5u);
    EXPECT_EQ(dividePointUpToLength(u"a;bcdef", 5, given("\"Touten Character\" = \"\";")), 5u);
    EXPECT_EQ(dividePointUpToLength(u"a、bcdef", 5, shipped("ja_JP.UTF-8")), 2u);
    EXPECT_EQ(dividePointUpToLength(u"a、bcdef", 5, shipped("en_US.UTF-8")), 2u);
}

TEST_F(StringUtilityClassification, namesAreComparedNaturally) {
    EXPECT_EQ(naturalCompare(u"img2", u"IMG10"), -1);
    EXPECT_EQ(naturalCompare(u"img10", u"img2"), 1);
    EXPECT_EQ(naturalCompare(u"a", u"a"), 0);
}

} // namespace
} // namespace kestrine
