#include "kestrinectl/ShownPath.h"

#include <gtest/gtest.h>

namespace kestrine {

TEST(ShownPath, leavesOutStepsThatLeadNowhere) {
    EXPECT_EQ(shownPath("./a//b"), "a/b");
    EXPECT_EQ(shownPath("/a/./b/"), "/a/b");
    EXPECT_EQ(shownPath("//a"), shownPath("/a"));
    EXPECT_EQ(shownPath("a"), "a");
}

TEST(ShownPath, keepsWhatMayLeadElsewhere) {
    EXPECT_EQ(shownPath("a/../b"), "a/../b");
    EXPECT_EQ(shownPath("./../a/.."), "../a/..");
}

TEST(ShownPath, neverBecomesNothingOrAnOption) {
    EXPECT_EQ(shownPath("."), ".");
    EXPECT_EQ(shownPath(".//"), ".");
    EXPECT_EQ(shownPath("/"), "/");
    EXPECT_EQ(shownPath(""), "");
    EXPECT_EQ(shownPath("./-a"), "./-a");
    EXPECT_EQ(shownPath("-a"), "-a") << "as typed";
}

TEST(ShownPath, isLeftOutOfAReasonWhoseLineStartsWithIt) {
    EXPECT_EQ(withoutPath("cannot open a b: refused", "a b"), "cannot open: refused");
    EXPECT_EQ(withoutPath("a b is not a regular file", "a b"), "is not a regular file");
    EXPECT_EQ(withoutPath("cannot create a b/Web: refused", "a b"), "cannot create a b/Web: refused");
}

} // namespace kestrine
