#include "kestrinectl/text/ShownText.h"

#include <gtest/gtest.h>

namespace kestrine {

TEST(ShownText, controlCharactersAreEscapedOnATerminal) {
    EXPECT_EQ(shownText("a\nb\tc\rd", true), "a\\nb\\tc\\rd");
    EXPECT_EQ(shownText("\x1b[31mred\x7f", true), "\\x1b[31mred\\x7f");
    EXPECT_EQ(shownText(std::string_view("\0\x1f", 2), true), "\\x00\\x1f");
}

TEST(ShownText, directionMarksAndC1ControlsAreEscapedAsCodePoints) {
    EXPECT_EQ(shownText("gpj.\u202eexe", true), "gpj.\\u202eexe");
    EXPECT_EQ(shownText("\u009b\u2028\u2066\u200f\u061c", true), "\\u009b\\u2028\\u2066\\u200f\\u061c");
}

TEST(ShownText, bytesThatAreNotUTF8AreEscaped) { EXPECT_EQ(shownText("a\xff\x9b", true), "a\\xff\\x9b"); }

TEST(ShownText, allOtherCharactersAreUnchanged) {
    const std::string text = "Größe 日本 😀 50% a\\b ~ \u00a0\u2010\u202f";
    EXPECT_EQ(shownText(text, true), text);
}

TEST(ShownText, inAPipeAllBytesAreUnchanged) {
    const std::string bytes("\0\n\x1b\xff\u202e", 7);
    EXPECT_EQ(shownText(bytes, false), bytes);
}

} // namespace kestrine
