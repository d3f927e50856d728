#include "_MyClasses/Category/FileManagerUtility.h"
#include "platform/finder/FinderMetadata.h"
#include "tests/support/CurrentFolder.h"
#include "tests/support/SystemFeatures.h"
#include "tests/support/TemporaryFolder.h"

#include <fcntl.h>
#include <fstream>
#include <gtest/gtest.h>
#include <sys/stat.h>

namespace kestrine {
namespace {

using testing::CurrentFolder;
using testing::TemporaryFolder;
namespace fs = std::filesystem;

void makeFoldersTo(const std::string& path) {
    myUtility::makeFoldersToPath(NSFileManager::defaultManager(), NSString::fromUTF8(path));
}

bool isEmpty(const fs::path& folder) { return fs::directory_iterator(folder) == fs::directory_iterator(); }

TEST(FileManagerUtility, everyMissingFolderAlongThePathIsMade) {
    const TemporaryFolder folder;
    makeFoldersTo(folder / "x/y/z");
    for (const char* path : {"x", "x/y", "x/y/z"})
        EXPECT_TRUE(fs::is_directory(folder / path)) << path;
}

TEST(FileManagerUtility, anExistingPathIsNotChanged) {
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

TEST(FileManagerUtility, aFileInTheMiddleOfThePathStopsWithoutAnError) {
    const TemporaryFolder folder;
    folder.write("file", "content");
    makeFoldersTo(folder / "file/a/b");
    EXPECT_EQ(testing::readFile(folder / "file"), "content");
}

TEST(FileManagerUtility, repeatedAndTrailingSeparatorsAreIgnored) {
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

TEST(FileManagerUtility, folderNamesThatAreNotUTF8Work) {
    const TemporaryFolder folder;
    makeFoldersTo(folder / "caf\xe9/x");
    EXPECT_TRUE(fs::is_directory(folder / "caf\xe9/x"));
}

NSFileManager& manager() { return NSFileManager::defaultManager(); }

bool isDirectory(const std::string& path) {
    return myUtility::fileIsDirectory(manager(), NSString::fromUTF8(path));
}

TEST(FileManagerUtility, aPlainFolderIsADirectory) {
    const TemporaryFolder folder;
    fs::create_directory(folder / "plain");
    fs::create_directory_symlink("plain", folder / "link");
    EXPECT_TRUE(isDirectory(folder / "plain"));
    EXPECT_TRUE(isDirectory(folder / "link"));
    EXPECT_FALSE(isDirectory(folder.write("file", "")));
    EXPECT_FALSE(isDirectory(folder / "missing"));
    EXPECT_FALSE(isDirectory(""));
    EXPECT_FALSE(myUtility::fileIsDirectory(manager(), std::nullopt));
}

TEST(FileManagerUtility, aPackageCountsAsAFile) {
    const TemporaryFolder folder;
    fs::create_directories(folder / "Program.app/Contents");
    fs::create_directory(folder / "iPhoto Library.app");
    EXPECT_FALSE(isDirectory(folder / "Program.app"));
    EXPECT_FALSE(isDirectory(folder / "iPhoto Library.app"));
    EXPECT_TRUE(isDirectory(folder / "Program.app/Contents"));
}

TEST(FileManagerUtility, thePackageOfThePictureLibraryIsADirectory) {
    if (!testing::keepsAttributes())
        GTEST_SKIP() << "the temporary folder's file system keeps no extended attributes";
    const TemporaryFolder folder;
    const FinderInfo package{.flags = 0x2000};
    for (const char* name : {"iPhoto Library", "iphoto library"}) {
        fs::create_directory(folder / name);
        ASSERT_TRUE(setFinderInformation(folder / name, package));
    }
    EXPECT_TRUE(isDirectory(folder / "iPhoto Library"));
    EXPECT_FALSE(isDirectory(folder / "iphoto library")) << "the name is taken exactly";
}

void setModificationDate(const std::string& path, timespec date) {
    const timespec times[2] = {{0, UTIME_OMIT}, date};
    ASSERT_EQ(::utimensat(AT_FDCWD, path.c_str(), times, AT_SYMLINK_NOFOLLOW), 0);
}

int compare(const std::string& first, const std::string& second) {
    return myUtility::compareModificationDate(manager(), NSString::fromUTF8(first),
                                              NSString::fromUTF8(second));
}

TEST(FileManagerUtility, datesCompareWithTheirFractions) {
    const TemporaryFolder folder;
    const std::string older = folder.write("older", ""), newer = folder.write("newer", "");
    setModificationDate(older, {1'200'000'000, 1'000});
    setModificationDate(newer, {1'200'000'000, 2'000});
    EXPECT_EQ(compare(older, newer), -1);
    EXPECT_EQ(compare(newer, older), 1);
    EXPECT_EQ(compare(older, older), 0);
    setModificationDate(newer, {1'200'000'000, 1'000});
    EXPECT_EQ(compare(older, newer), 0);
}

TEST(FileManagerUtility, aMissingFirstFileComparesEqualAndAMissingSecondIsOlder) {
    const TemporaryFolder folder;
    const std::string file = folder.write("file", ""), missing = folder / "missing";
    const NSString there = NSString::fromUTF8(file);
    EXPECT_EQ(compare(missing, file), 0);
    EXPECT_EQ(compare(file, missing), 1);
    EXPECT_EQ(compare(missing, missing), 0);
    EXPECT_EQ(myUtility::compareModificationDate(manager(), std::nullopt, there), 0);
    EXPECT_EQ(myUtility::compareModificationDate(manager(), there, std::nullopt), 1);
    EXPECT_EQ(myUtility::compareModificationDate(manager(), std::nullopt, std::nullopt), 0);
}

TEST(FileManagerUtility, theDateOfALinkIsItsOwnButADanglingLinkIsMissing) {
    const TemporaryFolder folder;
    const std::string file = folder.write("file", ""), link = folder / "link";
    fs::create_symlink("file", link);
    setModificationDate(file, {2'000, 0});
    setModificationDate(link, {1'000, 0});
    EXPECT_EQ(compare(link, file), -1);
    EXPECT_EQ(compare(file, link), 1);
    fs::create_symlink("nowhere", folder / "dangling");
    EXPECT_EQ(compare(folder / "dangling", file), 0);
    EXPECT_EQ(compare(file, folder / "dangling"), 1);
}

std::uint64_t sizeOf(const std::string& path) {
    return myUtility::calcSizeOfDirectory(manager(), NSString::fromUTF8(path));
}

/// The size of the item itself; links are not followed.
std::uint64_t ownSize(const std::string& path) {
    struct stat status {};
    EXPECT_EQ(::lstat(path.c_str(), &status), 0) << path;
    return static_cast<std::uint64_t>(status.st_size);
}

TEST(FileManagerUtility, theSizeOfAFileIsItsOwn) {
    const TemporaryFolder folder;
    const CurrentFolder before(folder.path());
    EXPECT_EQ(sizeOf(folder.write("file", "12345")), 5u);
    EXPECT_EQ(sizeOf(folder / "missing"), 0u);
    EXPECT_EQ(fs::current_path(), fs::canonical(folder.path())) << "only a folder becomes the current one";
}

TEST(FileManagerUtility, theSizeOfAnEmptyFolderIsZero) {
    const TemporaryFolder folder;
    const CurrentFolder before(folder.path());
    EXPECT_EQ(sizeOf(folder.path()), 0u);
}

TEST(FileManagerUtility, aFileWhosePathIsTooLongCountsAsNothing) {
    const TemporaryFolder folder;
    const CurrentFolder before(folder.path());
    std::string path = folder.path().string();
    for (int level = 0; level < 16; ++level) {
        const std::string name(245, 'n');
        fs::create_directory(name);
        fs::current_path(name);
        path += "/" + name;
    }
    std::ofstream(std::string(200, 'f')) << "12345";
    std::uint64_t folders = 0;
    for (; path != folder.path(); path = fs::path(path).parent_path())
        folders += ownSize(path);
    EXPECT_EQ(sizeOf(folder.path()), folders);
}

TEST(FileManagerUtility, theSizeOfAFolderIsTheSumOfItsContents) {
    const TemporaryFolder folder;
    const CurrentFolder before(folder.path());
    folder.write("top/a", "12345");
    folder.write("top/below/b", "123");
    folder.write("top/caf\xe9", "1");
    fs::create_symlink(folder.write("large", std::string(100'000, 'x')), folder / "top/link");
    EXPECT_EQ(sizeOf(folder / "top"),
              5 + 3 + 1 + ownSize(folder / "top/below") + ownSize(folder / "top/link"));
}

TEST(FileManagerUtility, theMeasuredFolderStaysTheCurrentOne) {
    const TemporaryFolder folder;
    const CurrentFolder before(folder.path());
    folder.write("top/a", "12345");
    EXPECT_EQ(sizeOf("top"), 5u) << "by a relative path, too";
    EXPECT_EQ(fs::current_path(), fs::canonical(folder / "top"));
}

TEST(FileManagerUtility, aLinkToAFolderIsNotFollowed) {
    const TemporaryFolder folder;
    const CurrentFolder before(folder.path());
    folder.write("top/a", "12345");
    fs::create_directory_symlink("top", folder / "link");
    EXPECT_EQ(sizeOf(folder / "link"), 3u);
}

} // namespace
} // namespace kestrine
