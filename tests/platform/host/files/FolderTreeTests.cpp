#include "platform/host/files/FolderTree.h"
#include "platform/host/files/Folders.h"
#include "tests/support/IsolatedProcess.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

namespace kestrine {
namespace {

using ::testing::ElementsAre;
using testing::TemporaryFolder;
using ::testing::UnorderedElementsAre;
namespace fs = std::filesystem;

TEST(FolderTree, allItemsBelowAFolderAreListedWithRelativePaths) {
    const TemporaryFolder folder;
    folder.write("a/b/deep", "");
    folder.write("caf\xe9", "");
    fs::create_directory(folder / "empty");
    EXPECT_THAT(*pathsBelow(folder.path()), UnorderedElementsAre("a", "a/b", "a/b/deep", "caf\xe9", "empty"));
}

TEST(FolderTree, aFolderComesBeforeItsContent) {
    const TemporaryFolder folder;
    folder.write("a/b/c", "");
    EXPECT_THAT(*pathsBelow(folder.path()), ElementsAre("a", "a/b", "a/b/c"));
}

TEST(FolderTree, linksAreListedAndNotFollowed) {
    const TemporaryFolder folder;
    folder.write("a/file", "");
    fs::create_directory_symlink(folder.path(), folder / "a/loop");
    EXPECT_THAT(*pathsBelow(folder / "a"), UnorderedElementsAre("file", "loop"));
}

TEST(FolderTree, aPipeIsListedWithoutWaitingForAWriter) {
    const TemporaryFolder folder;
    ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
    EXPECT_THAT(*pathsBelow(folder.path()), ElementsAre("pipe"));
}

TEST(FolderTree, onlyAFolderCanBeListed) {
    const TemporaryFolder folder;
    EXPECT_FALSE(pathsBelow(folder.write("file", "")));
    EXPECT_EQ(pathsBelow(folder / "missing").failure().reason, Reason::notFound);
    EXPECT_EQ(pathsBelow("").failure().reason, Reason::malformed);
}

TEST(FolderTree, anUnreadableFolderIsListedWithoutItsContent) {
    const TemporaryFolder folder;
    folder.write("a/hidden", "");
    fs::permissions(folder.path(), fs::perms(0755));
    fs::permissions(folder / "a", fs::perms::none);
    testing::runAsOrdinaryUser([&] { EXPECT_THAT(*pathsBelow(folder.path()), ElementsAre("a")); });
    fs::permissions(folder / "a", fs::perms(0700));
}

TEST(FolderTree, aTreeIsListedUpToTheMaximalPathLength) {
    const TemporaryFolder folder;
    testing::runIsolated([&] {
        const std::string name(200, 'n');
        fs::current_path(folder.path());
        for (int level = 0; level < 30; ++level) {
            ASSERT_TRUE(makeFolder(name));
            fs::current_path(name);
        }
        const Result<std::vector<std::string>> paths = pathsBelow(folder.path());
        ASSERT_TRUE(paths);
        EXPECT_EQ(paths->size(), 21u) << "20 levels of 201 bytes can be opened, and one more is listed";
    });
}

} // namespace
} // namespace kestrine
