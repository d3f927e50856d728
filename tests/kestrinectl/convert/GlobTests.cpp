#include "kestrinectl/convert/ConvertInputs.h"

#include <gtest/gtest.h>

namespace kestrine {
namespace {

TEST(Glob, withoutASlashMatchesTheName) {
    EXPECT_TRUE(globMatches("*.png", "raw/deep/a.png"));
    EXPECT_TRUE(globMatches("[ab].png", "b.png"));
    EXPECT_FALSE(globMatches("*.png", "a.PNG"));
    EXPECT_FALSE(globMatches("raw", "raw/a.png"));
}

TEST(Glob, withASlashMatchesThePath) {
    EXPECT_TRUE(globMatches("raw/*", "raw/a.png"));
    EXPECT_TRUE(globMatches("raw/*", "raw/deep/a.png"));
    EXPECT_FALSE(globMatches("raw/*", "other/raw/a.png"));
}

} // namespace
} // namespace kestrine
