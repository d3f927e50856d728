#include "platform/host/files/PathParts.h"

#include <gtest/gtest.h>

namespace kestrine {
namespace {

TEST(PathParts, aPathIsSplitAtItsLastSlash) {
    struct Row {
        const char *path, *folder, *name;
    };
    for (const Row& row :
         {Row{"/a/b.jpg", "/a", "b.jpg"}, Row{"/b.jpg", "/", "b.jpg"}, Row{"b.jpg", ".", "b.jpg"},
          Row{"a//b.jpg", "a", "b.jpg"}, Row{"//b", "/", "b"}, Row{"/a/", "/a", ""}, Row{"/", "/", ""},
          Row{"../x", "..", "x"}, Row{"", ".", ""}}) {
        EXPECT_EQ(folderOf(row.path), row.folder) << row.path;
        EXPECT_EQ(nameOf(row.path), row.name) << row.path;
    }
}

TEST(PathParts, pathsAreJoinedByExactlyOneSlash) {
    EXPECT_EQ(joinedPath("/a", "b"), "/a/b");
    EXPECT_EQ(joinedPath("/", "b"), "/b");
    EXPECT_EQ(joinedPath(".", "b"), "./b");
}

TEST(PathParts, anAdditionIsInsertedBeforeTheExtension) {
    struct Row {
        const char *name, *addition, *result;
    };
    for (const Row& row :
         {Row{"a.jpg", " copy", "a copy.jpg"}, Row{"a", ".2", "a.2"}, Row{".hidden", " copy", ".hidden copy"},
          Row{"a.tar.gz", " 1", "a.tar 1.gz"}, Row{"0123456789.jpg", " copy", "0123456 copy.jpg"},
          Row{"012345\xC3\xA9.jpg", " copy", "012345 copy.jpg"}})
        EXPECT_EQ(nameWithAddition(row.name, row.addition, 16), row.result) << row.name;
}

TEST(PathParts, anExtensionHasAtMost31Characters) {
    const std::string longest(31, 'x');
    EXPECT_EQ(nameWithAddition("a." + longest, ".2", 255), "a.2." + longest);
    EXPECT_EQ(nameWithAddition("a.x" + longest, ".2", 255), "a.x" + longest + ".2");
}

TEST(PathParts, charactersOfFourBytesAreNotCut) {
    for (const char* name :
         {"0123\xF0\x9F\x98\x80.jpg", "01234\xF0\x9F\x98\x80.jpg", "012345\xF0\x9F\x98\x80.jpg"})
        EXPECT_EQ(nameWithAddition(name, " copy", 16),
                  std::string(name, std::string(name).find('\xF0')) + " copy.jpg");
}

TEST(PathParts, bytesThatAreNoCharactersAreCutAnywhere) {
    EXPECT_EQ(nameWithAddition("\x80\x80\x80.jpg", " copy", 11), "\x80\x80 copy.jpg");
    EXPECT_EQ(nameWithAddition("a\x80\x80\x80\x80\x80.jpg", " copy", 13), "a\x80\x80\x80 copy.jpg");
}

TEST(PathParts, emptyPathsAndZeroBytesAreMalformed) {
    EXPECT_EQ(checkPath("").failure().reason, Reason::malformed);
    EXPECT_EQ(checkPath(std::string("a\0b", 3)).failure().reason, Reason::malformed);
    EXPECT_TRUE(checkPath("a\nb\xFF%s"));
}

} // namespace
} // namespace kestrine
