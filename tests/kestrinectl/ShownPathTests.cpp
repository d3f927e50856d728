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

} // namespace kestrine
