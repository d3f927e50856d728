#include "_MyClasses/Category/StringUtility.h"
#include "platform/foundation/NSException.h"

#include <gtest/gtest.h>

namespace kestrine {
namespace {

using namespace StringUtility;

constexpr NSRange none{0, 0};

// Span ranges

TEST(StringUtility, aSpanRunsFromTheFirstOpeningToTheNextClosingDelimiter) {
    EXPECT_EQ(rangeOfStringFrom(u"a[b]c[d]", u"[", u"]"), (NSRange{1, 3}));
    EXPECT_EQ(rangeOfStringFrom(u"x<!--y-->", u"<!--", u"-->"), (NSRange{1, 8}));
}

TEST(StringUtility, aClosingDelimiterOnlyBeforeTheOpeningOneMakesNoSpan) {
    EXPECT_EQ(rangeOfStringFrom(u"]a[", u"[", u"]"), none);
    EXPECT_EQ(rangeOfStringFrom(u"abc", u"[", u"]"), none);
}

TEST(StringUtility, anEmptyReceiverOrDelimiterMakesNoSpan) {
    EXPECT_EQ(rangeOfStringFrom(u"", u"[", u"]"), none);
    EXPECT_EQ(rangeOfStringFrom(u"[a]", u"", u"]"), none);
    EXPECT_EQ(rangeOfStringFrom(u"[a]", u"[", u""), none);
    EXPECT_EQ(rangeOfStringFrom(u"", u"[", u"]", {0, 5}), none);
    EXPECT_EQ(rangeOfStringFrom(u"[a]", u"", u"]", {0, 5}), none);
    EXPECT_EQ(rangeOfStringFrom(u"[a]", u"[", u"", {0, 5}), none);
}

TEST(StringUtility, spansAreCaseSensitiveAndSubstringsAreNot) {
    EXPECT_EQ(rangeOfStringFrom(u"A(b)", u"a", u")"), none);
    EXPECT_EQ(rangeOfStringFrom(u"(aXbx", u"(", u"x"), (NSRange{0, 5}));
    EXPECT_EQ(substringFrom(u"abcXdefYg", u"x", u"y"), NSString(u"def"));
}

TEST(StringUtility, equalDelimitersSpanFromTheFirstToTheSecondOccurrence) {
    EXPECT_EQ(rangeOfStringFrom(u"a|b|c|", u"|", u"|"), (NSRange{1, 3}));
    EXPECT_EQ(rangeOfStringFrom(u"a|b", u"|", u"|"), none);
}

TEST(StringUtility, aSpanInARangeIsCompletelyInside) {
    EXPECT_EQ(rangeOfStringFrom(u"[a][b]", u"[", u"]", {1, 5}), (NSRange{3, 3}));
    EXPECT_EQ(rangeOfStringFrom(u"[a][b]", u"[", u"]", {3, 2}), none)
        << "the closing delimiter is after the range";
    EXPECT_EQ(rangeOfStringFrom(u"[a][b]", u"[", u"]", {6, 0}), none);
}

TEST(StringUtility, aRangePastTheEndRaises) {
    EXPECT_THROW(rangeOfStringFrom(u"[a]", u"[", u"]", {0, 4}), NSException);
    EXPECT_THROW(rangeOfStringFrom(u"[a]", u"[", u"]", {4, 0}), NSException);
    EXPECT_THROW(rangeOfStringFrom(u"[a]", u"[", u"]", {2, SIZE_MAX}), NSException);
}

// Removing and replacing

TEST(StringUtility, removingASpanRemovesEveryOccurrenceOfIt) {
    EXPECT_EQ(removeStringFrom(u"a<b>c<b>d<e>", u"<", u">"), NSString(u"acd<e>"));
}

TEST(StringUtility, removingAllSpansLeavesNone) {
    EXPECT_EQ(removeAllStringStartFrom(u"a<b>c<b>d<e>", u"<", u">"), NSString(u"acd"));
}

TEST(StringUtility, withoutASpanTheResultIsTheReceiverItself) {
    const NSString text(u"a>b<c");
    EXPECT_TRUE(removeStringFrom(text, u"<", u">").isSame(text));
    EXPECT_TRUE(removeAllStringStartFrom(text, u"<", u">").isSame(text));
    EXPECT_TRUE(removeAllStringStartFrom(text, u"", u">").isSame(text));
    EXPECT_FALSE(removeAllStringStartFrom(u"<a>b", u"<", u">").isSame(text));
}

TEST(StringUtility, removingAMissingStringGivesANewEqualString) {
    const NSString text(u"abc");
    for (const char16_t* part : {u"x", u""}) {
        EXPECT_EQ(removeString(text, part), text);
        EXPECT_FALSE(removeString(text, part)->isSame(text));
    }
}

TEST(StringUtility, everyOccurrenceIsRemovedFromLeftToRight) {
    EXPECT_EQ(removeString(u"/a/b/a/c", u"/a/"), NSString(u"bc"));
    EXPECT_EQ(removeString(u"xaxa", u"a"), NSString(u"xx"));
    EXPECT_EQ(removeString(u"axa", u"a"), NSString(u"x"));
    EXPECT_EQ(removeString(u"aaa", u"aa"), NSString(u"a"));
    EXPECT_EQ(removeString(u"Aa", u"a"), NSString(u"A"));
    EXPECT_EQ(removeString(u"", u"a"), NSString(u""));
}

TEST(StringUtility, everyOccurrenceIsReplaced) {
    EXPECT_EQ(replaceStringFrom(u"2008:01:02", u":", u"-"), NSString(u"2008-01-02"));
    EXPECT_EQ(replaceStringFrom(u"aXbX", u"X", u"XX"), NSString(u"aXXbXX"));
    EXPECT_EQ(replaceStringFrom(u"ab", u"a", u""), NSString(u"b"));
    EXPECT_EQ(replaceStringFrom(u"100%@", u"%@", u"%d"), NSString(u"100%d"));
}

TEST(StringUtility, replacingAnEmptyStringGivesTheReceiverItself) {
    const NSString text(u"2008:01:02");
    EXPECT_TRUE(replaceStringFrom(text, u"", u"-")->isSame(text));
    EXPECT_FALSE(replaceStringFrom(text, u"x", u"-")->isSame(text));
    EXPECT_EQ(replaceStringFrom(text, u"x", u"-"), text);
}

/// Removes the spans one by one.
NSString removedStepByStep(NSString text, const NSString& opening, const NSString& closing) {
    while (rangeOfStringFrom(text, opening, closing).length != 0)
        text = removeStringFrom(text, opening, closing);
    return text;
}

TEST(StringUtility, removingAllSpansEqualsRemovingOneByOne) {
    const std::pair<NSString, NSString> delimiters[] = {{u"<", u">"},   {u"|", u"|"},   {u"<a", u">"},
                                                        {u"<", u"a>"},  {u"<<", u">>"}, {u"aba", u"<a"},
                                                        {u"ab", u"ba"}, {u"<>", u"><"}, {u"aa", u"a"}};
    constexpr std::u16string_view letters = u"<>ab|";
    constexpr int longest = 7;
    for (int number = 0, count = 78125; number < count; number++) { // 5^7 texts
        std::u16string text;
        for (int rest = number; text.size() < longest; rest /= 5)
            text += letters[static_cast<std::size_t>(rest % 5)];
        for (const auto& [opening, closing] : delimiters)
            ASSERT_EQ(removeAllStringStartFrom(text, opening, closing),
                      removedStepByStep(text, opening, closing))
                << NSString(text).utf8() << " " << opening.utf8() << " " << closing.utf8();
    }
}

TEST(StringUtility, removingAllSpansEqualsRemovingOneByOneForLongStrings) {
    std::uint32_t state = 1;
    const auto random = [&state](std::uint32_t below) {
        return (state = state * 1664525 + 1013904223) / 65536 % below;
    };
    const char16_t* const pieces[] = {u"<a>", u"<b>",   u"<",    u">",   u"a",
                                      u"b",   u"<a<b>", u"<!--", u"-->", u"|"};
    const std::pair<NSString, NSString> delimiters[] = {
        {u"<", u">"}, {u"<!--", u"-->"}, {u"|", u"|"}, {u"<a", u">"}};
    for (int round = 0; round < 20000; round++) {
        std::u16string text;
        for (std::uint32_t i = 0, count = 5 + random(20); i < count; i++)
            text += pieces[random(10)];
        for (const auto& [opening, closing] : delimiters)
            ASSERT_EQ(removeAllStringStartFrom(text, opening, closing),
                      removedStepByStep(text, opening, closing))
                << NSString(text).utf8() << " " << opening.utf8();
    }
}

TEST(StringUtility, aDelimiterThatARemovalCreatesCounts) {
    // Removing "bkcab" joins "bkcxab" + "k" and "cyab"; the next span "bkcyab" extends over this boundary.
    EXPECT_EQ(removeAllStringStartFrom(u"zzbkcabbkcyabbkcxabkbkcabcyab", u"bkc", u"ab"),
              NSString(u"zzbkcxa"));
    EXPECT_EQ(removeAllStringStartFrom(u"a<b>[c]", u"a[", u"]"), NSString(u"a<b>[c]"));
    EXPECT_EQ(removeAllStringStartFrom(u"xaabX]bY]", u"ab", u"]"), NSString(u"x"));
}

TEST(StringUtility, aLongStringWithManyDifferentSpansIsProcessed) {
    std::u16string text;
    std::u16string expected;
    for (int i = 0; i < 200000; i++) { // step by step this would compare 10^11 code units
        text += u"x<!--" + NSString::fromUTF8(std::to_string(i)).utf16() + u"-->";
        expected += u'x';
    }
    EXPECT_TRUE(removeAllStringStartFrom(text, u"<!--", u"-->") == NSString(expected));
}

// Substrings

TEST(StringUtility, anEmptySubstringIsNil) {
    EXPECT_EQ(substringFrom(u"x[]y", u"[", u"]"), std::nullopt);
    EXPECT_EQ(substringFrom(u"xy[", u"[", u"]"), std::nullopt);
    EXPECT_EQ(substringFrom(u"x[y", u"[", u"]"), std::nullopt);
    EXPECT_EQ(substringFrom(u"]x[y", u"[", u"]"), std::nullopt);
    EXPECT_EQ(substringFrom(u"x[a]y", u"[", u"]"), NSString(u"a"));
}

TEST(StringUtility, withoutAnOpeningDelimiterTheSubstringIsNil) {
    EXPECT_EQ(substringFrom(u"x[a]y", std::nullopt, u"]"), std::nullopt);
    EXPECT_EQ(substringFrom(u"x[a]y", u"", u"]"), std::nullopt);
    EXPECT_EQ(substringFrom(u"x[a]y", u"[", u""), std::nullopt);
}

TEST(StringUtility, theClosingDelimiterCanBeAfterTheRange) {
    EXPECT_EQ(substringFrom(u"a[bc]d", u"[", u"]", {0, 2}), NSString(u"bc"));
    EXPECT_EQ(substringFrom(u"a[bc]d", u"[", u"]", {0, 1}), std::nullopt)
        << "the opening one must lie inside";
    EXPECT_EQ(substringFrom(u"[a][b]", u"[", u"]", {1, 4}), NSString(u"b"));
}

TEST(StringUtility, aSubstringInARangePastTheEndIsNil) {
    EXPECT_EQ(substringFrom(u"a[b]c", u"[", u"]", {0, 6}), std::nullopt);
    EXPECT_EQ(substringFrom(u"a[b]c", u"[", u"]", {6, 0}), std::nullopt);
    EXPECT_EQ(substringFrom(u"a[b]c", u"[", u"]", {1, SIZE_MAX}), std::nullopt);
    EXPECT_EQ(substringFrom(u"a[b]c", u"[", u"]", {0, 5}), NSString(u"b"));
}

TEST(StringUtility, dateAndTimeAreSplitAtTheBlank) {
    const NSString date(u"2008:01:02 10:11:12");
    EXPECT_EQ(substringTo(date, u" "), NSString(u"2008:01:02"));
    EXPECT_EQ(substringFrom(date, u" "), NSString(u"10:11:12"));
}

TEST(StringUtility, textBeforeALeadingDelimiterIsNil) {
    EXPECT_EQ(substringTo(u" abc", u" "), std::nullopt);
    EXPECT_EQ(substringTo(u"abc", u" "), std::nullopt);
    EXPECT_EQ(substringTo(u"abc", u""), std::nullopt);
    EXPECT_EQ(substringTo(u"abXcx", u"x"), NSString(u"ab"));
}

TEST(StringUtility, textAfterATrailingDelimiterIsNil) {
    EXPECT_EQ(substringFrom(u"abc ", u" "), std::nullopt);
    EXPECT_EQ(substringFrom(u"abc", u" "), std::nullopt);
    EXPECT_EQ(substringFrom(u"abc", u""), std::nullopt);
    EXPECT_EQ(substringFrom(u"aXbx", u"x"), NSString(u"bx"));
}

TEST(StringUtility, volumeNamesAreFoundInAnyCase) {
    EXPECT_EQ(substringFrom(u"/volumes/Disk/b", u"/Volumes/", u"/"), NSString(u"Disk"));
}

// Case

TEST(StringUtility, caseIsFoldedCodePointByCodePoint) {
    EXPECT_EQ(substringFrom(u"aÉb", u"é"), NSString(u"b"));
    EXPECT_EQ(substringFrom(u"aΣb", u"ς"), NSString(u"b")) << "both small sigmas fold alike";
    EXPECT_EQ(substringFrom(u"a\U00010400b", u"\U00010428"), NSString(u"b"));
    EXPECT_EQ(substringFrom(u"3\u212Aelvin", u"k"), NSString(u"elvin"));
    EXPECT_EQ(substringFrom(u"Straße!", u"SS"), std::nullopt) << "one code point never matches two";
}

TEST(StringUtility, aMatchNeverSplitsASurrogatePair) {
    EXPECT_EQ(substringFrom(u"a\xd83d\xdca9z", u"\xdca9"), std::nullopt);
    EXPECT_EQ(substringTo(u"a\xd83d\xdca9z", u"\xd83d"), std::nullopt);
    EXPECT_EQ(substringTo(u"a\xd83d\xdca9z", u"\xd83d\xdca9"), NSString(u"a"));
}

TEST(StringUtility, invalidBytesMatchThemselves) {
    const NSString text = NSString::fromUTF8("caf\xe9/x");
    EXPECT_EQ(substringTo(text, NSString::fromUTF8("\xe9")), NSString(u"caf"));
    EXPECT_EQ(substringFrom(text, NSString::fromUTF8("\xe8")), std::nullopt);
}

} // namespace
} // namespace kestrine
