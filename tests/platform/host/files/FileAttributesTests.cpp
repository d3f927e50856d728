#include "platform/host/files/FileAttributes.h"
#include "tests/support/CurrentFolder.h"
#include "tests/support/IsolatedProcess.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <unistd.h>

namespace kestrine {
namespace {

using testing::CurrentFolder;
using testing::TemporaryFolder;
namespace fs = std::filesystem;

struct stat attributesWith(mode_t rights, time_t modified) {
    struct stat status {};
    status.st_mode = rights;
    status.st_uid = ::geteuid();
    status.st_gid = ::getegid();
    status.st_mtim = {modified, 500};
    return status;
}

TEST(FileAttributes, aLinkIsFollowedOnlyOnRequest) {
    const TemporaryFolder folder;
    fs::create_symlink(folder.write("file", "12345"), folder / "link");
    EXPECT_TRUE(S_ISLNK(attributesOf(folder / "link", FollowLinks::no)->st_mode));
    EXPECT_EQ(attributesOf(folder / "link", FollowLinks::yes)->st_size, 5);
}

TEST(FileAttributes, aMissingItemIsNotFound) {
    const TemporaryFolder folder;
    fs::create_symlink("nowhere", folder / "link");
    EXPECT_EQ(attributesOf(folder / "missing", FollowLinks::no).failure().reason, Reason::notFound);
    EXPECT_EQ(attributesOf(folder / "link", FollowLinks::yes).failure().reason, Reason::notFound);
    EXPECT_EQ(attributesOf("", FollowLinks::no).failure().reason, Reason::malformed);
}

TEST(FileAttributes, aFolderIsCreatedWithModeAndTime) {
    const TemporaryFolder folder;
    ASSERT_TRUE(makeFolderWithAttributes(folder / "made", attributesWith(0751, 1000)));
    const Result<struct stat> made = attributesOf(folder / "made", FollowLinks::no);
    EXPECT_EQ(made->st_mode, static_cast<mode_t>(S_IFDIR | 0751));
    EXPECT_EQ(made->st_mtim.tv_sec, 1000);
    EXPECT_EQ(made->st_mtim.tv_nsec, 500);
}

TEST(FileAttributes, setIDAndStickyBitsAreLeftOutUnderAnotherOwner) {
    const TemporaryFolder folder;
    fs::permissions(folder.path(), fs::perms::all);
    testing::runAsOrdinaryUser([&] {
        struct stat rootsOwn = attributesWith(07755, 1000);
        rootsOwn.st_uid = rootsOwn.st_gid = 0;
        ASSERT_TRUE(makeFolderWithAttributes(folder / "made", rootsOwn));
        const Result<struct stat> made = attributesOf(folder / "made", FollowLinks::no);
        EXPECT_EQ(made->st_mode & 07777, 0755u);
        EXPECT_NE(made->st_uid, 0u);
    });
}

TEST(FileAttributes, aNameInUseAlreadyExists) {
    const TemporaryFolder folder;
    const std::string file = folder.write("file", "content");
    EXPECT_EQ(makeFolderWithAttributes(file, attributesWith(0700, 0)).failure().reason,
              Reason::alreadyExists);
    EXPECT_EQ(testing::readFile(file), "content");
    EXPECT_EQ(makeFolderWithAttributes("", attributesWith(0700, 0)).failure().reason, Reason::malformed);
}

TEST(FileAttributes, whoMayReadAFileMayExecuteIt) {
    const TemporaryFolder folder;
    const std::string file = folder.write("file", "");
    fs::permissions(file, fs::perms(0640));
    ASSERT_TRUE(makeExecutable(file));
    EXPECT_EQ(attributesOf(file, FollowLinks::yes)->st_mode & 07777, 0750U);
    EXPECT_EQ(makeExecutable(folder / "missing").failure().reason, Reason::notFound);
}

TEST(FileAttributes, theCurrentFolderChangesOnlyToAnExistingFolder) {
    const TemporaryFolder folder;
    const CurrentFolder before(fs::temp_directory_path());
    EXPECT_FALSE(changeCurrentFolder(folder.write("file", "")));
    EXPECT_FALSE(changeCurrentFolder(folder / "missing"));
    EXPECT_FALSE(changeCurrentFolder(""));
    ASSERT_TRUE(changeCurrentFolder(folder.path()));
    EXPECT_TRUE(fs::equivalent(fs::current_path(), folder.path()));
}

} // namespace
} // namespace kestrine
