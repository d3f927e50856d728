#include "kestrinectl/text/Replacement.h"

#include <gtest/gtest.h>

namespace kestrine {
namespace {

constexpr Replacement table[] = {{'a', "bb"}, {'b', ""}, {'\xff', "a"}};

TEST(Replacement, everyCharacterIsReplacedOnce) {
    EXPECT_EQ(replaced("abc\xff", table), "bbca");
    EXPECT_EQ(replaced("", table), "");
}

} // namespace
} // namespace kestrine
