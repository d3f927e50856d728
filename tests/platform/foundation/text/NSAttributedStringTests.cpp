#include "platform/foundation/text/NSAttributedString.h"

#include "platform/foundation/NSException.h"
#include "platform/foundation/text/NSParagraphStyle.h"

#include <gtest/gtest.h>

namespace kestrine {
namespace {

const Object clipping = std::make_shared<NSParagraphStyle>(NSLineBreakByClipping);
const Object wrapping = std::make_shared<NSParagraphStyle>(NSLineBreakByWordWrapping);

TEST(AttributedString, hasNoAttributesAtFirst) {
    const NSAttributedString text(u"abc");
    NSRange range;
    EXPECT_EQ(text.attribute(u"x", 1, &range), nullptr);
    EXPECT_EQ(range, (NSRange{0, 3}));
    EXPECT_EQ(text.string(), NSString(u"abc"));
}

TEST(AttributedString, anAttributeAppliesOnlyToItsRange) {
    NSAttributedString text(u"abcdef");
    text.addAttribute(NSParagraphStyleAttributeName, clipping, {2, 2});
    NSRange range;
    EXPECT_EQ(text.attribute(NSParagraphStyleAttributeName, 3, &range), clipping);
    EXPECT_EQ(range, (NSRange{2, 2}));
    EXPECT_EQ(text.attribute(NSParagraphStyleAttributeName, 5, &range), nullptr);
    EXPECT_EQ(range, (NSRange{4, 2}));
    EXPECT_EQ(text.attribute(u"other", 3, &range), nullptr);
    EXPECT_EQ(range, (NSRange{0, 6}));
}

TEST(AttributedString, aLaterValueReplacesAnEarlierOne) {
    NSAttributedString text(u"abcdef");
    text.addAttribute(u"s", clipping, {0, 6});
    text.addAttribute(u"s", wrapping, {1, 2});
    text.addAttribute(u"s", clipping, {2, 1});
    NSRange range;
    EXPECT_EQ(text.attribute(u"s", 1, &range), wrapping);
    EXPECT_EQ(range, (NSRange{1, 1}));
    EXPECT_EQ(text.attribute(u"s", 5, &range), clipping);
    EXPECT_EQ(range, (NSRange{2, 4})) << "adjacent ranges with the same value are one";
}

TEST(AttributedString, aCopyIsIndependent) {
    NSAttributedString text(u"abc");
    const NSAttributedString copy = text;
    text.addAttribute(u"s", clipping, {0, 3});
    EXPECT_EQ(copy.attribute(u"s", 0), nullptr);
}

TEST(AttributedString, aRangeOrIndexBeyondTheEndRaises) {
    NSAttributedString text(u"abc");
    EXPECT_THROW(text.addAttribute(u"s", clipping, {0, 4}), NSException);
    EXPECT_THROW(text.addAttribute(u"s", clipping, {4, 0}), NSException);
    EXPECT_THROW(text.attribute(u"s", 3), NSException);
    EXPECT_NO_THROW(text.addAttribute(u"s", clipping, {3, 0}));
}

} // namespace
} // namespace kestrine
