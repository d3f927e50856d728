#include "kestrinectl/desktop/ThunarFile.h"

#include <gtest/gtest.h>

namespace kestrine {
namespace {

ThunarFile parsed(const std::string& content) {
    const Result<ThunarFile> file = parseThunarFile(content);
    EXPECT_TRUE(file) << content;
    return file ? *file : ThunarFile();
}

TEST(ThunarFile, actionsHavePlacesAndFields) {
    const std::string content =
        "<actions>\n<action><name>a &amp; b</name><range></range><image-files/></action>\n"
        "<!-- <action/> --><action/></actions>";
    const ThunarFile file = parsed(content);
    ASSERT_EQ(file.actions.size(), 2U);
    const ThunarAction& first = file.actions.front();
    EXPECT_TRUE(content.substr(first.begin, first.end - first.begin).ends_with("<image-files/></action>"));
    EXPECT_EQ(first.field("name"), "a & b");
    EXPECT_EQ(first.fields.count("range"), 0U);
    EXPECT_EQ(first.fields.count("image-files"), 1U);
    EXPECT_EQ(content.substr(file.actions[1].begin, file.actions[1].end - file.actions[1].begin),
              "<action/>");
    EXPECT_EQ(content.substr(file.endTag), "</actions>");
}

TEST(ThunarFile, anEmptyElementEndsWithItsSlash) {
    const std::string content = "<actions a='/>' /> \n";
    const ThunarFile file = parsed(content);
    EXPECT_TRUE(file.isEmptyElement);
    EXPECT_EQ(content.substr(file.endTag), "/> \n");
}

TEST(ThunarFile, otherElementsAreNoActionsAndActionsInThemNeither) {
    EXPECT_TRUE(parsed("<actions><x><action/></x><y/></actions>").actions.empty());
}

TEST(ThunarFile, deepNestingIsNoDanger) {
    std::string content = "<actions>";
    for (int i = 0; i < 100'000; ++i)
        content += "<a>";
    for (int i = 0; i < 100'000; ++i)
        content += "</a>";
    EXPECT_TRUE(parsed(content + "</actions>").actions.empty());
}

TEST(ThunarFile, whatIsNotWellFormedIsRefused) {
    for (const char* content :
         {"", "<actions>", "<actions/><actions/>", "<action/>", "<actions>&x;</actions>",
          "<!DOCTYPE actions><actions/>", "<actions>\xff</actions>"}) {
        const Result<ThunarFile> file = parseThunarFile(content);
        ASSERT_FALSE(file) << content;
        EXPECT_EQ(file.failure().reason, Reason::malformed);
    }
}

} // namespace
} // namespace kestrine
