#include "platform/host/files/ExtendedAttributes.h"
#include "platform/host/files/FileStatus.h"
#include "platform/host/files/Folders.h"
#include "platform/host/files/TreeCopy.h"
#include "tests/support/InterposedCalls.h"
#include "tests/support/IsolatedProcess.h"
#include "tests/support/SystemFeatures.h"
#include "tests/support/TemporaryFolder.h"

#include <cerrno>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

namespace kestrine {
namespace {

using testing::bytesOf;
using testing::readFile;
using testing::runAsOrdinaryUser;
using testing::runWithOwnMounts;
using testing::TemporaryFolder;

class TreeCopy : public ::testing::Test {
protected:
    Result<CopiedItem> copy() const {
        return copyTree({opened_->number(), "from"}, {opened_->number(), "to"});
    }
    struct stat statusAt(const std::string& name) const {
        return *statusOf({AT_FDCWD, folder_ / name});
    }

    const TemporaryFolder folder_;
    const Result<FileDescriptor> opened_ = openFolder(folder_ / "");
};

TEST_F(TreeCopy, aFileIsCopiedWithItsModeAndTimes) {
    const std::string content(700'000, 'z'); // several blocks, the last one incomplete
    folder_.write("from", content);
    ::chmod((folder_ / "from").c_str(), 0640);
    const timespec times[2] = {{1'000'000'000, 123'456'789}, {1'100'000'000, 987'654'321}};
    ASSERT_EQ(::utimensat(AT_FDCWD, (folder_ / "from").c_str(), times, 0), 0);
    ASSERT_TRUE(copy());
    EXPECT_EQ(statusAt("to").st_atim.tv_sec, 1'000'000'000);
    EXPECT_EQ(readFile(folder_ / "to"), content);
    EXPECT_EQ(statusAt("to").st_mode & 07777, 0640u);
    EXPECT_EQ(statusAt("to").st_mtim.tv_sec, 1'100'000'000);
    EXPECT_EQ(statusAt("to").st_mtim.tv_nsec, 987'654'321);
}

TEST_F(TreeCopy, filesOfAnySizeAreCopied) {
    for (const std::size_t size : {0, 1, 262'143, 262'144, 262'145, 524'288}) {
        folder_.write("from", std::string(size, 'b'));
        ASSERT_TRUE(copy()) << size;
        EXPECT_EQ(readFile(folder_ / "to"), std::string(size, 'b'));
        ASSERT_EQ(::unlink((folder_ / "to").c_str()), 0);
    }
}

TEST_F(TreeCopy, extendedAttributesAreCopied) {
    folder_.write("from/a", "x");
    if (!testing::keepsAttributes())
        GTEST_SKIP() << "the temporary folder's file system keeps no extended attributes";
    ASSERT_TRUE(setExtendedAttribute(folder_ / "from/a", "user.xdg.comment", bytesOf("hello")));
    ASSERT_TRUE(setExtendedAttribute(folder_ / "from", "user.label", bytesOf("red")));
    ASSERT_TRUE(copy());
    EXPECT_EQ(*getExtendedAttribute(folder_ / "to/a", "user.xdg.comment"), bytesOf("hello"));
    EXPECT_EQ(*getExtendedAttribute(folder_ / "to", "user.label"), bytesOf("red"));
}

TEST_F(TreeCopy, linksAreCopiedInsteadOfTheirTargets) {
    folder_.write("from/real", "x");
    std::filesystem::create_symlink("real", folder_ / "from/link");
    std::filesystem::create_symlink("no\nwhere", folder_ / "from/dangling");
    std::filesystem::create_directory_symlink("..", folder_ / "from/up");
    ASSERT_TRUE(copy());
    EXPECT_EQ(std::filesystem::read_symlink(folder_ / "to/link"), "real");
    EXPECT_EQ(std::filesystem::read_symlink(folder_ / "to/dangling"), "no\nwhere");
    EXPECT_EQ(std::filesystem::read_symlink(folder_ / "to/up"), "..");
}

TEST_F(TreeCopy, linksKeepTheirTimes) {
    std::filesystem::create_symlink("nowhere", folder_ / "from");
    const timespec times[2] = {{5, 0}, {7, 9}};
    ASSERT_EQ(::utimensat(AT_FDCWD, (folder_ / "from").c_str(), times, AT_SYMLINK_NOFOLLOW), 0);
    ASSERT_TRUE(copy());
    EXPECT_EQ(statusAt("to").st_mtim.tv_sec, 7);
    EXPECT_EQ(statusAt("to").st_mtim.tv_nsec, 9);
}

TEST_F(TreeCopy, theOwnerIsKeptByRootTogetherWithSetIDBits) {
    if (::geteuid() != 0)
        GTEST_SKIP() << "only root can give files to other users";
    folder_.write("from", "x");
    ASSERT_EQ(::chown((folder_ / "from").c_str(), 65534, 65533), 0);
    ASSERT_EQ(::chmod((folder_ / "from").c_str(), 06755), 0);
    ASSERT_TRUE(copy());
    EXPECT_EQ(statusAt("to").st_uid, 65534u);
    EXPECT_EQ(statusAt("to").st_gid, 65533u);
    EXPECT_EQ(statusAt("to").st_mode & 07777, 06755u);
}

TEST_F(TreeCopy, setIDBitsAreLeftOutUnderAnotherOwner) {
    if (::geteuid() != 0)
        GTEST_SKIP() << "only root can prepare files of another user";
    folder_.write("from", "x");
    ASSERT_EQ(::chmod((folder_ / "from").c_str(), 06755), 0);
    ASSERT_EQ(::chmod(folder_.path().c_str(), 0777), 0);
    runAsOrdinaryUser([&] {
        ASSERT_TRUE(copyTree({opened_->number(), "from"}, {opened_->number(), "to"}, Original::stays));
        EXPECT_EQ(statusAt("to").st_mode & 07777, 0755u);
    });
}

TEST_F(TreeCopy, foldersKeepTheirModesAndTimesOnEveryLevel) {
    folder_.write("from/a/b/deep \xFF", "x");
    ::chmod((folder_ / "from/a").c_str(), 0750);
    const timespec times[2] = {{5, 0}, {7, 0}};
    ASSERT_EQ(::utimensat(AT_FDCWD, (folder_ / "from/a").c_str(), times, 0), 0);
    ASSERT_TRUE(copy());
    EXPECT_EQ(readFile(folder_ / "to/a/b/deep \xFF"), "x");
    EXPECT_EQ(statusAt("to/a").st_mode & 07777, 0750u);
    EXPECT_EQ(statusAt("to/a").st_mtim.tv_sec, 7);
}

TEST_F(TreeCopy, ifAPipeCannotBeCopiedNothingOfItsFolderRemains) {
    folder_.write("from/a", "x");
    ASSERT_EQ(::mkfifo((folder_ / "from/pipe").c_str(), 0600), 0);
    EXPECT_EQ(copy().failure().reason, Reason::unsupported);
    EXPECT_FALSE(isTaken(folder_ / "to"));
}

TEST_F(TreeCopy, anItemWithTheNameIsNotReplaced) {
    folder_.write("from", "new");
    folder_.write("to", "old");
    EXPECT_EQ(copy().failure().reason, Reason::alreadyExists);
    EXPECT_EQ(readFile(folder_ / "to"), "old");
}

TEST_F(TreeCopy, foldersNestedTooDeeplyAreTooLarge) {
    std::string path = "from";
    for (unsigned level = 0; level < maxFolderDepth; ++level)
        path += "/d";
    ASSERT_TRUE(makePrivateFolders(folder_ / path));
    EXPECT_TRUE(copy());
    removeTree({opened_->number(), "to"});
    ASSERT_TRUE(makePrivateFolders(folder_ / (path + "/d")));
    EXPECT_EQ(copy().failure().reason, Reason::tooLarge);
    EXPECT_FALSE(isTaken(folder_ / "to"));
}

TEST_F(TreeCopy, removalPermissionIsNeededOnlyIfTheOriginalGoes) {
    folder_.write("locked/from", "x");
    std::filesystem::create_directory(folder_.path() / "open");
    ::chmod((folder_ / "").c_str(), 0755);
    ::chmod((folder_ / "open").c_str(), 0777);
    ::chmod((folder_ / "locked").c_str(), 0555);
    runAsOrdinaryUser([&] {
        Result<FileDescriptor> source = openFolder(folder_ / "locked"), target = openFolder(folder_ / "open");
        ASSERT_TRUE(source && target);
        const FolderEntry from{source->number(), "from"}, to{target->number(), "to"};
        EXPECT_EQ(copyTree(from, to).failure().reason, Reason::notPermitted);
        EXPECT_FALSE(isTaken(folder_ / "open/to"));
        EXPECT_TRUE(copyTree(from, to, Original::stays));
        EXPECT_EQ(readFile(folder_ / "open/to"), "x");
    });
    ::chmod((folder_ / "locked").c_str(), 0755);
}

TEST_F(TreeCopy, anotherFileSystemInsideIsRefused) {
    runWithOwnMounts([&] {
        folder_.write("from/a", "x");
        testing::mountFileSystem(folder_ / "from/disk", 64);
        Result<FileDescriptor> here = openFolder(folder_ / ""); // opened after the mount
        ASSERT_TRUE(here);
        EXPECT_EQ(copyTree({here->number(), "from"}, {here->number(), "to"}).failure().reason,
                  Reason::refused);
        EXPECT_FALSE(isTaken(folder_ / "to"));
    });
}

TEST_F(TreeCopy, itemsThatCouldNotBeRemovedAreNotCopied) {
    folder_.write("from/locked/a", "x");
    for (const char* open : {"", "from"})
        ::chmod((folder_ / open).c_str(), 0777);
    ::chmod((folder_ / "from/locked").c_str(), 0555);
    runAsOrdinaryUser([&] {
        EXPECT_EQ(copy().failure().reason, Reason::notPermitted);
        EXPECT_FALSE(isTaken(folder_ / "to"));
    });
    ::chmod((folder_ / "from/locked").c_str(), 0700);
}

TEST_F(TreeCopy, theOriginalIsRemovedWithItsContent) {
    folder_.write("from/a/b", "x");
    std::filesystem::create_symlink("b", folder_ / "from/a/link");
    Result<CopiedItem> copied = copy();
    ASSERT_TRUE(copied && checkUnchanged(opened_->number(), *copied));
    bool anythingRemoved = false;
    EXPECT_TRUE(removeOriginal(opened_->number(), *copied, anythingRemoved));
    EXPECT_FALSE(isTaken(folder_ / "from"));
    EXPECT_EQ(readFile(folder_ / "to/a/b"), "x");
}

TEST_F(TreeCopy, aFileChangedSinceTheCopyIsNotRemoved) {
    folder_.write("from", "old");
    Result<CopiedItem> copied = copy();
    ASSERT_TRUE(copied);
    folder_.write("from", "newer");
    bool anythingRemoved = false;
    EXPECT_EQ(checkUnchanged(opened_->number(), *copied).failure().reason, Reason::truncated);
    EXPECT_FALSE(removeOriginal(opened_->number(), *copied, anythingRemoved));
    EXPECT_FALSE(anythingRemoved);
    EXPECT_EQ(readFile(folder_ / "from"), "newer");
}

TEST_F(TreeCopy, aDifferenceInSizeOrTimeAloneIsAChange) {
    for (const auto& [content, seconds] : {std::pair{"older", 0}, std::pair{"new", 1}}) {
        folder_.write("from", "old");
        Result<CopiedItem> copied = copy();
        ASSERT_TRUE(copied);
        timespec times[2] = {copied->original.st_atim, copied->original.st_mtim};
        times[1].tv_sec += seconds;
        ASSERT_EQ(::utimensat(AT_FDCWD, folder_.write("from", content).c_str(), times, 0), 0);
        EXPECT_EQ(checkUnchanged(opened_->number(), *copied).failure().reason, Reason::truncated) << content;
        removeTree({opened_->number(), "to"});
    }
}

TEST_F(TreeCopy, aFileReplacedSinceTheCopyIsNotRemoved) {
    folder_.write("from", "same");
    Result<CopiedItem> copied = copy();
    ASSERT_TRUE(copied);
    const timespec times[2] = {copied->original.st_atim, copied->original.st_mtim};
    ASSERT_EQ(::utimensat(AT_FDCWD, folder_.write("other", "same").c_str(), times, 0), 0);
    ASSERT_EQ(::rename((folder_ / "other").c_str(), (folder_ / "from").c_str()), 0);
    bool anythingRemoved = false;
    EXPECT_FALSE(removeOriginal(opened_->number(), *copied, anythingRemoved));
    EXPECT_EQ(readFile(folder_ / "from"), "same");
}

TEST_F(TreeCopy, aFileThatReplacesTheOriginalWhileItIsRemovedStays) {
    folder_.write("from", "old");
    folder_.write("other", "new");
    Result<CopiedItem> copied = copy();
    ASSERT_TRUE(copied);
    testing::InterposedCalls calls;
    calls.onRename = [&](const std::string& oldName, const std::string&) {
        if (oldName == "from") // after the last look at the original
            std::filesystem::rename(folder_ / "other", folder_ / "from");
        return 0;
    };
    bool anythingRemoved = false;
    EXPECT_EQ(removeOriginal(opened_->number(), *copied, anythingRemoved).failure().reason,
              Reason::truncated);
    EXPECT_FALSE(anythingRemoved);
    EXPECT_EQ(readFile(folder_ / "from"), "new");
    EXPECT_EQ(readFile(folder_ / "to"), "old");
}

TEST_F(TreeCopy, anItemThatCannotGetItsNameBackCountsAsRemovedFromItsPlace) {
    folder_.write("from", "old");
    Result<CopiedItem> copied = copy();
    ASSERT_TRUE(copied);
    testing::InterposedCalls calls;
    calls.onRename = [&](const std::string& oldName, const std::string& newName) {
        if (oldName == "from")
            folder_.write("from", "changed");
        return newName == "from" ? EIO : 0;
    };
    bool anythingRemoved = false;
    EXPECT_FALSE(removeOriginal(opened_->number(), *copied, anythingRemoved));
    EXPECT_TRUE(anythingRemoved) << "so that the copy stays";
}

TEST_F(TreeCopy, aFileAddedSinceTheCopyIsNotRemoved) {
    folder_.write("from/a", "x");
    Result<CopiedItem> copied = copy();
    ASSERT_TRUE(copied);
    folder_.write("from/late", "keep me");
    EXPECT_FALSE(checkUnchanged(opened_->number(), *copied));
    bool anythingRemoved = false;
    EXPECT_FALSE(removeOriginal(opened_->number(), *copied, anythingRemoved));
    EXPECT_TRUE(anythingRemoved);
    EXPECT_EQ(readFile(folder_ / "from/late"), "keep me");
}

TEST_F(TreeCopy, foldersWithoutPermissionsAreRemovedToo) {
    ::chmod(folder_.path().c_str(), 0777);
    runAsOrdinaryUser([&] {
        ASSERT_TRUE(makePrivateFolders(folder_ / "ours/sub"));
        folder_.write("ours/sub/a", "x");
        for (const char* locked : {"ours/sub", "ours"})
            ::chmod((folder_ / locked).c_str(), 0);
        removeTree({opened_->number(), "ours"});
        EXPECT_FALSE(isTaken(folder_ / "ours"));
    });
}

TEST_F(TreeCopy, aLinkIsRemovedInsteadOfItsTarget) {
    folder_.write("real/a", "x");
    std::filesystem::create_directory_symlink("real", folder_ / "link");
    removeTree({opened_->number(), "link"});
    EXPECT_FALSE(isTaken(folder_ / "link"));
    EXPECT_EQ(readFile(folder_ / "real/a"), "x");
}

TEST_F(TreeCopy, inASharedFolderOnlyOwnersMayRemoveItems) {
    if (::geteuid() != 0)
        GTEST_SKIP() << "only root can prepare files of two users";
    folder_.write("theirs", "x");
    folder_.write("ours", "x");
    ASSERT_EQ(::chown((folder_ / "ours").c_str(), 65534, 65534), 0);
    ::chmod(folder_.path().c_str(), 01777);
    runAsOrdinaryUser([&] {
        EXPECT_EQ(checkRemovable(opened_->number(), statusAt("theirs")).failure().reason,
                  Reason::notPermitted);
        EXPECT_TRUE(checkRemovable(opened_->number(), statusAt("ours")));
    });
    ASSERT_EQ(::chown(folder_.path().c_str(), 65534, 65534), 0);
    EXPECT_TRUE(checkRemovable(opened_->number(), statusAt("ours"))) << "root may remove all items";
    runAsOrdinaryUser([&] {
        EXPECT_TRUE(checkRemovable(opened_->number(), statusAt("theirs"))) << "the user owns the folder";
    });
}

} // namespace
} // namespace kestrine
