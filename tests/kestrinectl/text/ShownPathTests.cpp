#include "kestrinectl/text/ShownPath.h"

#include <gtest/gtest.h>

namespace kestrine {

TEST(ShownPath, leavesOutRedundantSteps) {
    EXPECT_EQ(shownPath("./a//b"), "a/b");
    EXPECT_EQ(shownPath("/a/./b/"), "/a/b");
    EXPECT_EQ(shownPath("//a"), shownPath("/a"));
    EXPECT_EQ(shownPath("a"), "a");
}

TEST(ShownPath, keepsStepsThatMayLeadElsewhere) {
    EXPECT_EQ(shownPath("a/../b"), "a/../b");
    EXPECT_EQ(shownPath("./../a/.."), "../a/..");
}

TEST(ShownPath, neverBecomesEmptyOrLooksLikeAnOption) {
    EXPECT_EQ(shownPath("."), ".");
    EXPECT_EQ(shownPath(".//"), ".");
    EXPECT_EQ(shownPath("/"), "/");
    EXPECT_EQ(shownPath(""), "");
    EXPECT_EQ(shownPath("./-a"), "./-a");
    EXPECT_EQ(shownPath("-a"), "-a") << "as typed";
}

TEST(ShownPath, isNotRepeatedInAReasonOnALineThatStartsWithIt) {
    EXPECT_EQ(withoutPath("cannot open a b: refused", "a b"), "cannot open: refused");
    EXPECT_EQ(withoutPath("a b is not a regular file", "a b"), "is not a regular file");
    EXPECT_EQ(withoutPath("cannot create a b/Web: refused", "a b"), "cannot create a b/Web: refused");
}

} // namespace kestrine
