#include "_MyClasses/Category/FileManagerUtility.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace kestrine {
namespace {

using testing::TemporaryFolder;
namespace fs = std::filesystem;

void makeFoldersTo(const std::string& path) {
    myUtility::makeFoldersToPath(NSFileManager::defaultManager(), NSString::fromUTF8(path));
}

/// Makes `folder` the current one for as long as it lives.
class CurrentFolder {
public:
    explicit CurrentFolder(const fs::path& folder) : before_(fs::current_path()) { fs::current_path(folder); }
    ~CurrentFolder() { fs::current_path(before_); }

private:
    const fs::path before_;
};

bool isEmpty(const fs::path& folder) { return fs::directory_iterator(folder) == fs::directory_iterator(); }

TEST(FileManagerUtility, everyMissingFolderAlongThePathIsMade) {
    const TemporaryFolder folder;
    makeFoldersTo(folder / "x/y/z");
    for (const char* path : {"x", "x/y", "x/y/z"})
        EXPECT_TRUE(fs::is_directory(folder / path)) << path;
}

TEST(FileManagerUtility, anExistingPathIsLeftAlone) {
    const TemporaryFolder folder;
    folder.write("x/file", "content");
    makeFoldersTo(folder / "x");
    makeFoldersTo(folder / "x/file");
    EXPECT_EQ(testing::readFile(folder / "x/file"), "content");
}

TEST(FileManagerUtility, aRelativePathOfOneComponentMakesNothing) {
    const TemporaryFolder folder;
    const CurrentFolder current(folder.path());
    makeFoldersTo("out");
    makeFoldersTo("");
    EXPECT_TRUE(isEmpty(folder.path()));
}

TEST(FileManagerUtility, theFirstComponentOfARelativePathIsNeverMade) {
    const TemporaryFolder folder;
    const CurrentFolder current(folder.path());
    makeFoldersTo("missing/a/b");
    EXPECT_TRUE(isEmpty(folder.path()));
    fs::create_directory("there");
    makeFoldersTo("there/a/b");
    EXPECT_TRUE(fs::is_directory(folder / "there/a/b"));
}

TEST(FileManagerUtility, aFileInTheMiddleOfThePathEndsTheWorkQuietly) {
    const TemporaryFolder folder;
    folder.write("file", "content");
    makeFoldersTo(folder / "file/a/b");
    EXPECT_EQ(testing::readFile(folder / "file"), "content");
}

TEST(FileManagerUtility, repeatedSeparatorsAndOneAtTheEndDoNoHarm) {
    const TemporaryFolder folder;
    makeFoldersTo(folder / "a//b/");
    EXPECT_TRUE(fs::is_directory(folder / "a/b"));
}

TEST(FileManagerUtility, aLinkToAFolderCountsAsThatFolder) {
    const TemporaryFolder folder;
    fs::create_directory(folder / "real");
    fs::create_directory_symlink("real", folder / "link");
    makeFoldersTo(folder / "link/a");
    EXPECT_TRUE(fs::is_directory(folder / "real/a"));
}

TEST(FileManagerUtility, bytesThatAreNoTextNameTheFolderTheyName) {
    const TemporaryFolder folder;
    makeFoldersTo(folder / "caf\xe9/x");
    EXPECT_TRUE(fs::is_directory(folder / "caf\xe9/x"));
}

} // namespace
} // namespace kestrine
