// Items on other file systems than the home folder: the trash of their own file system, and copies to the
// home trash.
#include "platform/host/files/ExtendedAttributes.h"
#include "platform/host/files/FileStatus.h"
#include "platform/host/files/Folders.h"
#include "platform/host/files/PathParts.h"
#include "tests/platform/host/trash/TrashTesting.h"
#include "tests/support/InterposedCalls.h"
#include "tests/support/IsolatedProcess.h"
#include "tests/support/SystemFeatures.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace kestrine {
namespace {

using testing::bytesOf;
using testing::isEmptyTrash;
using testing::mountAgain;
using testing::mountFileSystem;
using testing::namesInFolder;
using testing::readFile;
using testing::recordedPath;
using testing::runAsOrdinaryUser;
using testing::runWithOwnMounts;
using testing::TemporaryFolder;

class TrashElsewhere : public testing::TrashTest {
protected:
    const std::string disk_ = work_ + "/disk";
    const std::string user_ = std::to_string(::geteuid());
    const std::string ownTrash_ = disk_ + "/.Trash-" + user_;

    /// Creates a file with the name of the disk's trash, so that the disk has no usable trash.
    void blockOwnTrash() const { folder_.write("work/disk/.Trash-" + user_, "in the way"); }
    std::string write(const std::string& name, const std::string& content = "content") const {
        return folder_.write("work/disk/" + name, content);
    }

    /// Moves an item to the trash in a process that is killed when it syncs a file of 7 bytes.
    void trashUntilKilled(const std::string& path) const {
        const pid_t child = ::fork();
        if (child == 0) {
            testing::InterposedCalls calls;
            calls.onSync = [](int file) {
                struct stat status {};
                return ::fstat(file, &status) == 0 && status.st_size == 7 ? ::raise(SIGKILL) : 0;
            };
            (void)trash(path);
            ::_exit(0);
        }
        int status = 0;
        ASSERT_EQ(::waitpid(child, &status, 0), child);
        ASSERT_TRUE(WIFSIGNALED(status)) << "it was not killed";
    }
};

TEST_F(TrashElsewhere, aDiskGetsATrashForTheUser) {
    runWithOwnMounts([&] {
        mountFileSystem(disk_, 1024);
        const std::string file = write("sub/a b.jpg");
        Result<TrashedItem> item = trash(file);
        ASSERT_TRUE(item);
        EXPECT_EQ(item->path, ownTrash_ + "/files/a b.jpg");
        EXPECT_EQ(readFile(item->path), "content");
        EXPECT_EQ(recordedPath(*item), "sub/a b.jpg") << "relative to the top folder of the disk";
        EXPECT_FALSE(isTaken(file));
        struct stat status {};
        ASSERT_EQ(::stat(ownTrash_.c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 07777, 0700u);
    });
}

TEST_F(TrashElsewhere, aTrashPreparedForAllUsersIsPreferred) {
    runWithOwnMounts([&] {
        mountFileSystem(disk_, 1024);
        ASSERT_TRUE(makeFolder(disk_ + "/.Trash"));
        ::chmod((disk_ + "/.Trash").c_str(), 01777);
        Result<TrashedItem> item = trash(write("a.jpg"));
        ASSERT_TRUE(item);
        EXPECT_EQ(item->path, disk_ + "/.Trash/" + user_ + "/files/a.jpg");
        EXPECT_EQ(recordedPath(*item), "a.jpg");
        EXPECT_FALSE(isTaken(ownTrash_));
    });
}

TEST_F(TrashElsewhere, aPreparedTrashThatIsNotStickyOrIsALinkIsNotUsed) {
    runWithOwnMounts([&] {
        mountFileSystem(disk_, 1024);
        ASSERT_TRUE(makeFolder(disk_ + "/.Trash"));
        ::chmod((disk_ + "/.Trash").c_str(), 0777);
        EXPECT_EQ(trash(write("a.jpg"))->path, ownTrash_ + "/files/a.jpg");
        ASSERT_EQ(::rename((disk_ + "/.Trash").c_str(), (disk_ + "/elsewhere").c_str()), 0);
        ::chmod((disk_ + "/elsewhere").c_str(), 01777);
        std::filesystem::create_directory_symlink("elsewhere", disk_ + "/.Trash");
        EXPECT_EQ(trash(write("a.jpg"))->path, ownTrash_ + "/files/a.2.jpg");
        EXPECT_THAT(namesInFolder(disk_ + "/elsewhere"), ::testing::IsEmpty());
    });
}

TEST_F(TrashElsewhere, aFolderOfAnotherUserIsNotUsedAsTrash) {
    if (::geteuid() != 0)
        GTEST_SKIP() << "only root can prepare folders of another user";
    runWithOwnMounts([&] {
        mountFileSystem(disk_, 1024);
        ASSERT_TRUE(makeFolder(ownTrash_) && makePrivateFolders(disk_ + "/.Trash/" + user_));
        ::chmod((disk_ + "/.Trash").c_str(), 01777);
        for (const std::string& folder : {ownTrash_, disk_ + "/.Trash/" + user_})
            ASSERT_EQ(::chown(folder.c_str(), 65534, 65534), 0);
        EXPECT_EQ(trash(write("a.jpg"))->path, trash_ + "/files/a.jpg") << "a copy in the home trash";
        EXPECT_THAT(namesInFolder(ownTrash_), ::testing::IsEmpty());
    });
}

TEST_F(TrashElsewhere, aLinkInsteadOfTheTrashIsNotFollowed) {
    runWithOwnMounts([&] {
        mountFileSystem(disk_, 1024);
        ASSERT_TRUE(makeFolder(disk_ + "/trap"));
        std::filesystem::create_directory_symlink("trap", ownTrash_);
        EXPECT_EQ(trash(write("a.jpg"))->path, trash_ + "/files/a.jpg");
        EXPECT_THAT(namesInFolder(disk_ + "/trap"), ::testing::IsEmpty());
    });
}

TEST_F(TrashElsewhere, itemsInTheTrashOfADiskAreRefused) {
    runWithOwnMounts([&] {
        mountFileSystem(disk_, 1024);
        Result<TrashedItem> item = trash(write("a.jpg"));
        ASSERT_TRUE(item);
        write(".Trash/1000/files/b.jpg");
        write(".Trash-extra/c.jpg");
        write(".Trash-/d.jpg");
        for (const std::string& path :
             {item->path, item->infoPath, ownTrash_, disk_ + "/.Trash", disk_ + "/.Trash/1000/files/b.jpg"})
            EXPECT_EQ(trash(path).failure().reason, Reason::refused) << path;
        EXPECT_TRUE(trash(disk_ + "/.Trash-/d.jpg"));
        EXPECT_TRUE(trash(disk_ + "/.Trash-extra/c.jpg")) << "not a trash, only a similar name";
    });
}

TEST_F(TrashElsewhere, withoutATrashOnTheDiskTheFileIsCopiedToTheHomeTrash) {
    runWithOwnMounts([&] {
        mountFileSystem(disk_, 1024);
        blockOwnTrash();
        const std::string file = write("a.jpg", std::string(300'000, 'x'));
        ::chmod(file.c_str(), 0640);
        const timespec times[2] = {{5, 0}, {1'000'000'007, 123'000'000}};
        ASSERT_EQ(::utimensat(AT_FDCWD, file.c_str(), times, 0), 0);
        const bool hasAttributes = testing::keepsAttributes(disk_);
        EXPECT_EQ(setExtendedAttribute(file, "user.xdg.comment", bytesOf("hello")).ok(), hasAttributes);
        Result<TrashedItem> item = trash(file);
        ASSERT_TRUE(item);
        EXPECT_EQ(item->path, trash_ + "/files/a.jpg");
        EXPECT_EQ(readFile(item->path), std::string(300'000, 'x'));
        EXPECT_EQ(recordedPath(*item), file);
        EXPECT_FALSE(isTaken(file));
        struct stat status {};
        ASSERT_EQ(::stat(item->path.c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 07777, 0640u);
        EXPECT_EQ(status.st_mtim.tv_sec, 1'000'000'007);
        EXPECT_EQ(status.st_mtim.tv_nsec, 123'000'000);
        if (hasAttributes) {
            EXPECT_EQ(*getExtendedAttribute(item->path, "user.xdg.comment"), bytesOf("hello"));
        }
        EXPECT_THAT(namesInFolder(trash_ + "/files"), ::testing::ElementsAre("a.jpg"));
    });
}

TEST_F(TrashElsewhere, aFolderIsCopiedWithItsContent) {
    runWithOwnMounts([&] {
        mountFileSystem(disk_, 1024);
        blockOwnTrash();
        write("album/sub/n\nl \xFF.jpg", "one");
        write("album/b.jpg", "two");
        std::filesystem::create_symlink("../../outside", disk_ + "/album/sub/link");
        Result<TrashedItem> item = trash(disk_ + "/album");
        ASSERT_TRUE(item);
        EXPECT_EQ(readFile(item->path + "/sub/n\nl \xFF.jpg"), "one");
        EXPECT_EQ(readFile(item->path + "/b.jpg"), "two");
        EXPECT_EQ(std::filesystem::read_symlink(item->path + "/sub/link"), "../../outside");
        EXPECT_FALSE(isTaken(disk_ + "/album"));
        EXPECT_TRUE(isTaken(trash_ + "/directorysizes"));
    });
}

TEST_F(TrashElsewhere, copiesWithTheSameNameAreNumberedToo) {
    runWithOwnMounts([&] {
        mountFileSystem(disk_, 1024);
        blockOwnTrash();
        for (const char* expected : {"a.jpg", "a.2.jpg"})
            EXPECT_EQ(trash(write("a.jpg", expected))->path, trash_ + "/files/" + expected);
        EXPECT_EQ(readFile(trash_ + "/files/a.2.jpg"), "a.2.jpg");
    });
}

TEST_F(TrashElsewhere, aLinkIsCopiedInsteadOfItsTarget) {
    runWithOwnMounts([&] {
        mountFileSystem(disk_, 1024);
        blockOwnTrash();
        std::filesystem::create_symlink("nowhere", disk_ + "/dangling");
        Result<TrashedItem> item = trash(disk_ + "/dangling");
        ASSERT_TRUE(item);
        EXPECT_EQ(std::filesystem::read_symlink(item->path), "nowhere");
        EXPECT_FALSE(isTaken(disk_ + "/dangling"));
    });
}

TEST_F(TrashElsewhere, aSecondMountOfTheHomeDiskHasItsOwnTrash) {
    runWithOwnMounts([&] {
        ASSERT_TRUE(makeFolder(work_ + "/real"));
        mountAgain(work_ + "/real", disk_);
        Result<TrashedItem> item = trash(write("a.jpg"));
        ASSERT_TRUE(item);
        EXPECT_EQ(item->path, ownTrash_ + "/files/a.jpg");
        EXPECT_EQ(recordedPath(*item), "a.jpg");
        EXPECT_FALSE(isTaken(trash_ + "/files/a.jpg"));
    });
}

TEST_F(TrashElsewhere, fromASecondMountOfTheHomeDiskWithoutATrashTheFileIsCopied) {
    runWithOwnMounts([&] {
        ASSERT_TRUE(makeFolder(work_ + "/real"));
        mountAgain(work_ + "/real", disk_);
        blockOwnTrash();
        Result<TrashedItem> item = trash(write("a.jpg"));
        ASSERT_TRUE(item);
        EXPECT_EQ(item->path, trash_ + "/files/a.jpg");
        EXPECT_EQ(readFile(item->path), "content");
        EXPECT_EQ(recordedPath(*item), disk_ + "/a.jpg");
        EXPECT_FALSE(isTaken(work_ + "/real/a.jpg"));
    });
}

TEST_F(TrashElsewhere, withoutSpaceInTheHomeTrashTheOriginalStaysAndNoCopyRemains) {
    runWithOwnMounts([&] {
        mountFileSystem(disk_, 1024);
        mountFileSystem(home_ + "/small", 64);
        blockOwnTrash();
        const Environment environment{{"HOME", home_}, {"XDG_DATA_HOME", home_ + "/small"}};
        const std::string content(200'000, 'x');
        const std::string file = write("a.jpg", content);
        write("album/first.jpg", "small");
        write("album/second.jpg", content);
        EXPECT_EQ(moveToTrash(file, environment).failure().reason, Reason::noSpace);
        EXPECT_EQ(moveToTrash(disk_ + "/album", environment).failure().reason, Reason::noSpace);
        EXPECT_EQ(readFile(file), content);
        EXPECT_EQ(readFile(disk_ + "/album/first.jpg"), "small");
        EXPECT_EQ(readFile(disk_ + "/album/second.jpg"), content);
        EXPECT_TRUE(isEmptyTrash(home_ + "/small/Trash"));
    });
}

TEST_F(TrashElsewhere, fromAFullDiskTheFileIsCopied) {
    runWithOwnMounts([&] {
        mountFileSystem(disk_, 64);
        ASSERT_TRUE(makePrivateFolders(ownTrash_ + "/files") && makePrivateFolders(ownTrash_ + "/info"));
        const std::string file = write("a.jpg", std::string(65'536, 'x'));
        EXPECT_EQ(trash(file)->path, trash_ + "/files/a.jpg");
        EXPECT_FALSE(isTaken(file));
        EXPECT_TRUE(isEmptyTrash(ownTrash_));
    });
}

TEST_F(TrashElsewhere, aProcessKilledWhileItCopiesAFileLeavesNothingInTheTrash) {
    runWithOwnMounts([&] {
        mountFileSystem(disk_, 1024);
        blockOwnTrash();
        const std::string file = write("a.jpg");
        trashUntilKilled(file);
        EXPECT_EQ(readFile(file), "content");
        EXPECT_TRUE(isEmptyTrash(trash_));
    });
}

TEST_F(TrashElsewhere, aProcessKilledWhileItCopiesAFolderLeavesARecordedItemWithANameOfItsOwn) {
    runWithOwnMounts([&] {
        mountFileSystem(disk_, 1024);
        blockOwnTrash();
        trashUntilKilled(folderOf(write("album/a.jpg")));
        EXPECT_EQ(readFile(disk_ + "/album/a.jpg"), "content");
        const std::vector<std::string> left = namesInFolder(trash_ + "/files");
        ASSERT_EQ(left.size(), 1u);
        EXPECT_TRUE(left.front().ends_with(".kestrine-tmp"));
        EXPECT_EQ(recordedPath({"", trash_ + "/info/" + left.front() + ".trashinfo"}),
                  disk_ + "/" + left.front());
    });
}

TEST_F(TrashElsewhere, aFileIsCopiedUnderAHiddenNameWhereNamelessFilesCannotBeNamed) {
    runWithOwnMounts([&] {
        mountFileSystem(disk_, 1024);
        blockOwnTrash();
        const std::string file = write("a.jpg");
        if (!testing::failSystemCall(SYS_linkat, ENOENT))
            GTEST_SKIP() << "this system permits no filter of system calls";
        Result<TrashedItem> item = trash(file);
        ASSERT_TRUE(item);
        EXPECT_EQ(readFile(item->path), "content");
        EXPECT_FALSE(isTaken(file));
        EXPECT_THAT(namesInFolder(trash_ + "/files"), ::testing::ElementsAre("a.jpg"));
        EXPECT_THAT(namesInFolder(trash_ + "/info"), ::testing::ElementsAre("a.jpg.trashinfo"));
    });
}

TEST_F(TrashElsewhere, itemsThatCannotBeCopiedStay) {
    runWithOwnMounts([&] {
        mountFileSystem(disk_, 1024);
        blockOwnTrash();
        write("album/a.jpg");
        ASSERT_EQ(::mkfifo((disk_ + "/album/pipe").c_str(), 0600), 0);
        EXPECT_EQ(trash(disk_ + "/album").failure().reason, Reason::unsupported);
        EXPECT_EQ(trash(disk_ + "/album/pipe").failure().reason, Reason::unsupported);
        EXPECT_EQ(readFile(disk_ + "/album/a.jpg"), "content");
        EXPECT_TRUE(isEmptyTrash(trash_));
    });
}

TEST_F(TrashElsewhere, ifTheHomeCannotKeepTheAttributesTheOriginalStays) {
    runWithOwnMounts([&] {
        mountFileSystem(disk_, 1024);
        blockOwnTrash();
        const std::string file = write("a.jpg");
        if (!testing::keepsAttributes(disk_, 60'000))
            GTEST_SKIP() << "this file system keeps no large attributes";
        if (testing::keepsAttributes(home_, 60'000))
            GTEST_SKIP() << "the home's file system keeps attributes of that size, too";
        ASSERT_TRUE(setExtendedAttribute(file, "user.large", Bytes(60'000)));
        EXPECT_FALSE(trash(file));
        EXPECT_EQ(readFile(file), "content");
        EXPECT_EQ(getExtendedAttribute(file, "user.large")->size(), 60'000u);
        EXPECT_TRUE(isEmptyTrash(trash_));
    });
}

TEST_F(TrashElsewhere, onAReadOnlyDiskTheFileStays) {
    runWithOwnMounts([&] {
        mountFileSystem(disk_, 1024);
        const std::string file = write("a.jpg");
        ASSERT_EQ(::mount(nullptr, disk_.c_str(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr), 0);
        EXPECT_EQ(trash(file).failure().reason, Reason::notPermitted);
        EXPECT_EQ(readFile(file), "content");
        EXPECT_TRUE(isEmptyTrash(trash_));
    });
}

/// Sets a flag that protects a file even against root. Returns false if the file system has no such flags.
bool setFlag(const std::string& path, int flag) {
    const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    return file.isOpen() && ::ioctl(file.number(), FS_IOC_SETFLAGS, &flag) == 0;
}

TEST_F(TrashElsewhere, ifTheOriginalCannotBeRemovedTheCopyIsRemoved) {
    runWithOwnMounts([&] {
        mountFileSystem(disk_, 1024);
        blockOwnTrash();
        const std::string file = write("a.jpg");
        if (!setFlag(file, FS_IMMUTABLE_FL))
            GTEST_SKIP() << "files cannot be protected against removal here";
        EXPECT_EQ(trash(file).failure().reason, Reason::notPermitted);
        EXPECT_EQ(readFile(file), "content");
        EXPECT_TRUE(isEmptyTrash(trash_));
    });
}

TEST_F(TrashElsewhere, aFolderThatMayNotBeRemovedStays) {
    runWithOwnMounts([&] {
        mountFileSystem(disk_, 1024);
        blockOwnTrash();
        write("album/sub/a.jpg");
        if (!setFlag(disk_ + "/album", FS_APPEND_FL))
            GTEST_SKIP() << "folders cannot be protected against removal here";
        EXPECT_EQ(trash(disk_ + "/album").failure().reason, Reason::notPermitted);
        EXPECT_EQ(readFile(disk_ + "/album/sub/a.jpg"), "content");
        EXPECT_TRUE(isEmptyTrash(trash_));
    });
}

TEST_F(TrashElsewhere, ifAFolderIsRemovedInPartTheCopyIsCompleteAndTheRestKeepsItsName) {
    runWithOwnMounts([&] {
        mountFileSystem(disk_, 1024);
        blockOwnTrash();
        for (const char* name : {"album/1.jpg", "album/sub/a.jpg", "album/2.jpg"})
            write(name); // in any order of listing, one file comes before the folder
        if (!setFlag(disk_ + "/album/sub", FS_APPEND_FL))
            GTEST_SKIP() << "folders cannot be protected against removal here";
        EXPECT_EQ(trash(disk_ + "/album").failure().reason, Reason::notPermitted);
        EXPECT_EQ(readFile(disk_ + "/album/sub/a.jpg"), "content");
        EXPECT_LT(namesInFolder(disk_ + "/album").size(), 3u) << "one file was removed";
        for (const char* name : {"1.jpg", "sub/a.jpg", "2.jpg"})
            EXPECT_EQ(readFile(trash_ + "/files/album/" + name), "content") << name;
        EXPECT_EQ(recordedPath({"", trash_ + "/info/album.trashinfo"}), disk_ + "/album");
    });
}

TEST_F(TrashElsewhere, aSecondDeviceOfThisSystemHasItsOwnTrash) {
    const TemporaryFolder elsewhere("/dev/shm");
    struct stat here {
    }, there{};
    ASSERT_EQ(::stat(home_.c_str(), &here) + ::stat(elsewhere.path().c_str(), &there), 0);
    if (here.st_dev == there.st_dev)
        GTEST_SKIP() << "/dev/shm is on the file system of the temporary folder";
    const std::string deviceTrash = "/dev/shm/.Trash-" + user_;
    if (::access(deviceTrash.c_str(), F_OK) == 0 || ::access("/dev/shm/.Trash", F_OK) == 0)
        GTEST_SKIP() << "/dev/shm has a trash already, which the test must not touch";
    const std::string file = elsewhere.write("a.jpg", "content");
    Result<TrashedItem> item = trash(file);
    ASSERT_TRUE(item);
    EXPECT_EQ(item->path, deviceTrash + "/files/a.jpg");
    EXPECT_EQ(readFile(item->path), "content");
    EXPECT_EQ("/dev/shm/" + recordedPath(*item), file);
    EXPECT_FALSE(isTaken(file));
    std::filesystem::remove_all(deviceTrash);
}

} // namespace
} // namespace kestrine
