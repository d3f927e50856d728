#include "kestrinectl/text/MarkupText.h"

#include <gtest/gtest.h>

namespace kestrine {
namespace {

TEST(MarkupText, hasNoMarkupLeft) {
    EXPECT_EQ(markupText("<a b='\"'>&amp;"), "&lt;a b=&#39;&quot;&#39;&gt;&amp;amp;");
}

TEST(MarkupText, otherBytesStay) { EXPECT_EQ(markupText("a\n\xff\u202e;#"), "a\n\xff\u202e;#"); }

} // namespace
} // namespace kestrine
