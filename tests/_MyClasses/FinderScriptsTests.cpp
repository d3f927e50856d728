#include "_MyClasses/Category/FinderScripts.h"

#include <gtest/gtest.h>

namespace kestrine {
namespace {

using Paths = std::vector<NSString>;

/// The text of the range; nil when there is none.
OptionalString misleadingPathIn(const FinderScript& script) {
    const std::optional<NSRange> range = rangeOfMisleadingPath(script);
    return range ? OptionalString(script.source.substring(*range)) : std::nullopt;
}

TEST(FinderScripts, theScriptsHaveExactlyThisSource) {
    const Paths items{u"D:a", u"D:f:"};
    const struct {
        FinderScript script;
        const char* text;
    } rows[] = {
        {deletingScript(items), "tell application \"Finder\"\n delete {\"D:a\",\"D:f:\"}\n end tell"},
        {fileDeletingScript(u"D:a"), "tell application \"Finder\"\n delete file \"D:a\"\n end tell"},
        {duplicatingScript(items, u"D:to:", true),
         "tell application \"Finder\"\n duplicate {\"D:a\",\"D:f:\"} to \"D:to:\" with replacing\n end tell"},
        {duplicatingScript(items, u"D:to:", false),
         "tell application \"Finder\"\n duplicate {\"D:a\",\"D:f:\"} to \"D:to:\" without replacing\n end "
         "tell"},
        {movingScript(items, u"D:to:", true),
         "tell application \"Finder\"\n move {\"D:a\",\"D:f:\"} to \"D:to:\" with replacing\n end tell"},
        {movingScript(items, u"D:to:", false),
         "tell application \"Finder\"\n move {\"D:a\",\"D:f:\"} to \"D:to:\" without replacing\n end tell"},
        {fileMovingScript(u"D:a", u"D:to:", true),
         "tell application \"Finder\"\n move file \"D:a\" to \"D:to:\" with replacing\n end tell"},
        {fileMovingScript(u"D:a", u"D:to:", false),
         "tell application \"Finder\"\n move file \"D:a\" to \"D:to:\" without replacing\n end tell"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(row.script.source.utf8(), row.text);
}

TEST(FinderScripts, aListSeparatesPathsByCommas) {
    EXPECT_EQ(quotedList({u"D:a"}), NSString(u"\"D:a\""));
    EXPECT_EQ(quotedList({u"D:a", u"D:b"}), NSString(u"\"D:a\",\"D:b\""));
    EXPECT_EQ(quotedList({}), NSString(u""));
}

TEST(FinderScripts, aPlaceholderWithinANameIsNotReplaced) {
    EXPECT_EQ(fileMovingScript(u"D:%@ %d%%", u"D:%@:", true).source.utf8(),
              "tell application \"Finder\"\n move file \"D:%@ %d%%\" to \"D:%@:\" with replacing\n end tell");
}

TEST(FinderScripts, quotesAndBackslashesAreMisleadingInEveryPath) {
    for (const char16_t* path : {u"D:a\"b", u"D:a\\b", u"D:\",\"E:", u"D:f\":a", u"D:a\\"}) {
        EXPECT_EQ(misleadingPathIn(deletingScript({u"D:a", path})), NSString(path));
        EXPECT_EQ(misleadingPathIn(fileDeletingScript(path)), NSString(path));
        EXPECT_EQ(misleadingPathIn(duplicatingScript({u"D:a"}, path, true)), NSString(path));
        EXPECT_EQ(misleadingPathIn(movingScript({path}, u"D:f:", true)), NSString(path));
        EXPECT_EQ(misleadingPathIn(fileMovingScript(u"D:a", path, true)), NSString(path));
    }
}

TEST(FinderScripts, otherCharactersAreNotMisleading) {
    for (const char16_t* path : {u"", u"D:a'b", u"D:{a}, to \x201c", u"D:line\nfeed", u"D:\xdce9"})
        EXPECT_FALSE(misleadingPathIn(movingScript({path}, path, false)));
}

} // namespace
} // namespace kestrine
