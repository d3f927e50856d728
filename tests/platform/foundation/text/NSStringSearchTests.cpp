#include "platform/foundation/text/NSStringSearch.h"

#include "platform/foundation/NSException.h"

#include <gtest/gtest.h>

namespace kestrine {
namespace {

constexpr NSRange notFound{NSNotFound, 0};

TEST(NSStringSearch, aLiteralSearchComparesCodeUnits) {
    EXPECT_EQ(rangeOfString(u"abcabc", u"bc", 0), (NSRange{1, 2}));
    EXPECT_EQ(rangeOfString(u"abcabc", u"BC", 0), notFound);
    EXPECT_EQ(rangeOfString(u"abcabc", u"bc", 0, {2, 4}), (NSRange{4, 2}));
    EXPECT_EQ(rangeOfString(u"abcabc", u"bc", 0, {2, 3}), notFound);
}

TEST(NSStringSearch, anEmptyPartIsNotFound) {
    EXPECT_EQ(rangeOfString(u"abc", u"", 0), notFound);
    EXPECT_EQ(rangeOfString(u"abc", u"", NSCaseInsensitiveSearch), notFound);
    EXPECT_EQ(rangeOfString(u"", u"a", 0), notFound);
}

TEST(NSStringSearch, aCaseInsensitiveSearchFindsTheFirstOccurrence) {
    EXPECT_EQ(rangeOfString(u"xABab", u"aB", NSCaseInsensitiveSearch), (NSRange{1, 2}));
    EXPECT_EQ(rangeOfString(u"xABab", u"aB", NSCaseInsensitiveSearch, {2, 3}), (NSRange{3, 2}));
    EXPECT_EQ(rangeOfString(u"\U0001f600\U0001f600Ab", u"aB", NSCaseInsensitiveSearch), (NSRange{4, 2}))
        << "ranges count UTF-16 code units";
}

TEST(NSStringSearch, aCaseInsensitiveMatchNeverContainsHalfASurrogatePair) {
    const NSString text = u"a\U0001f600b";
    const NSString high = std::u16string{0xd83d}, low = std::u16string{0xde00};
    for (const NSRange range : {NSRange{0, 4}, NSRange{0, 2}, NSRange{2, 1}, NSRange{2, 2}}) {
        EXPECT_EQ(rangeOfString(text, high, NSCaseInsensitiveSearch, range), notFound) << range.location;
        EXPECT_EQ(rangeOfString(text, low, NSCaseInsensitiveSearch, range), notFound) << range.location;
    }
    EXPECT_EQ(rangeOfString(text, u"B", NSCaseInsensitiveSearch, {2, 2}), (NSRange{3, 1}));
    EXPECT_EQ(rangeOfString(text, u"A", NSCaseInsensitiveSearch, {0, 2}), (NSRange{0, 1}));
    EXPECT_EQ(rangeOfString(u"\U0001f600b", low, NSCaseInsensitiveSearch, {1, 2}), notFound)
        << "nor at the start of the string";
    EXPECT_EQ(rangeOfString(text, low, 0), (NSRange{2, 1})) << "a literal match does";
}

TEST(NSStringSearch, aRangeBeyondTheEndRaises) {
    EXPECT_THROW(rangeOfString(u"abc", u"a", 0, {0, 4}), NSException);
    EXPECT_THROW(rangeOfString(u"abc", u"a", 0, {1, 3}), NSException);
    EXPECT_THROW(rangeOfString(u"abc", u"", NSCaseInsensitiveSearch, {4, 0}), NSException);
    EXPECT_EQ(rangeOfString(u"abc", u"a", 0, {3, 0}), notFound);
}

} // namespace
} // namespace kestrine
