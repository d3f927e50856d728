#include "kestrinectl/text/HTMLText.h"

#include <gtest/gtest.h>

namespace kestrine {
namespace {

TEST(HTMLText, charactersWithAMeaningInHTMLBecomeReferences) {
    EXPECT_EQ(htmlText("a&b<c>d\"e'f.jpg"), "a&amp;b&lt;c&gt;d&quot;e&#39;f.jpg");
    EXPECT_EQ(htmlText("&lt;"), "&amp;lt;");
}

TEST(HTMLText, aNameCannotEndAnElementOrAnAttribute) {
    const std::string html = htmlText("\"></title><script>alert('x')</script>");
    EXPECT_EQ(html.find_first_of("<>\"'"), std::string::npos);
}

TEST(HTMLText, controlCharactersAndInvalidBytesAreEscapedAsOnATerminal) {
    EXPECT_EQ(htmlText("a\nb\tc\x1b[1m"), "a\\nb\\tc\\x1b[1m");
    EXPECT_EQ(htmlText("a\xff<\xc3"), "a\\xff&lt;\\xc3");
    EXPECT_EQ(htmlText(std::string("a\0b", 3)), "a\\x00b");
    EXPECT_EQ(htmlText("a\u202eb"), "a\\u202eb");
}

TEST(HTMLText, otherTextDoesNotChange) {
    EXPECT_EQ(htmlText(""), "");
    EXPECT_EQ(htmlText("$(touch x) `y` %3C \\ \u00e4\u65e5\U0001f600.jpg"),
              "$(touch x) `y` %3C \\ \u00e4\u65e5\U0001f600.jpg");
}

} // namespace
} // namespace kestrine
