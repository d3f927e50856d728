#include "platform/host/files/FileStatus.h"
#include "tests/support/IsolatedProcess.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace kestrine {
namespace {

using testing::TemporaryFolder;

TEST(FileStatus, filesAndFoldersExist) {
    const TemporaryFolder folder;
    const std::string file = folder.write("a\nb \xFF%n.jpg", "x");
    EXPECT_TRUE(itemExists(file) && isTaken(file));
    EXPECT_TRUE(itemExists(folder / "") && isTaken(folder / ""));
    EXPECT_FALSE(itemExists(folder / "b.jpg") || isTaken(folder / "b.jpg"));
}

TEST(FileStatus, onlyFoldersAndLinksToThemAreFolders) {
    const TemporaryFolder folder;
    const std::string file = folder.write("sub/a", "x");
    std::filesystem::create_symlink("sub", folder / "link");
    EXPECT_TRUE(folderExists(folder / "sub") && folderExists(folder / "link"));
    EXPECT_FALSE(folderExists(file) || folderExists(folder / "none") || folderExists(""));
}

TEST(FileStatus, aDanglingLinkDoesNotExistButUsesItsName) {
    const TemporaryFolder folder;
    std::filesystem::create_symlink("nowhere", folder / "link");
    EXPECT_FALSE(itemExists(folder / "link"));
    EXPECT_TRUE(isTaken(folder / "link"));
}

TEST(FileStatus, aLinkToAFileExists) {
    const TemporaryFolder folder;
    folder.write("a", "x");
    std::filesystem::create_symlink("a", folder / "link");
    EXPECT_TRUE(itemExists(folder / "link") && isTaken(folder / "link"));
}

TEST(FileStatus, absenceIsCertainOnlyIfTheSystemReportsIt) {
    const TemporaryFolder folder;
    folder.write("locked/a", "x");
    std::filesystem::create_symlink("nowhere", folder / "dangling");
    for (const char* absent : {"none", "none/a", "locked/a/b", "dangling"})
        EXPECT_TRUE(isAbsent(folder / absent)) << absent;
    EXPECT_TRUE(isAbsent(""));
    EXPECT_FALSE(isAbsent(folder / "locked/a"));
    EXPECT_FALSE(isAbsent(folder / std::string(256, 'n')));
    std::filesystem::permissions(folder.path(), std::filesystem::perms(0755));
    std::filesystem::permissions(folder / "locked", std::filesystem::perms::none);
    testing::runAsOrdinaryUser([&] { EXPECT_FALSE(isAbsent(folder / "locked/none")); });
    std::filesystem::permissions(folder / "locked", std::filesystem::perms(0700));
}

TEST(FileStatus, invalidNamesAreFree) {
    const TemporaryFolder folder;
    folder.write("a", "x");
    for (const std::string& path : {std::string(), folder / std::string(256, 'n'), folder / "a/b",
                                    folder / "a" + std::string("\0.jpg", 5), folder / std::string(5000, 'p')})
        EXPECT_FALSE(itemExists(path) || isTaken(path)) << path;
}

TEST(FileStatus, aNameIsPossibleUnlessItIsTooLong) {
    const TemporaryFolder folder;
    folder.write("a", "x");
    for (const std::string& name : {std::string("a"), std::string("b"), std::string(255, 'n')})
        EXPECT_TRUE(checkNameIsPossible(folder / name)) << name;
    EXPECT_EQ(checkNameIsPossible(folder / std::string(256, 'n')).failure().reason, Reason::tooLarge);
    EXPECT_EQ(checkNameIsPossible("").failure().reason, Reason::malformed);
}

} // namespace
} // namespace kestrine
