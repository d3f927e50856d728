// Behaviour after a failed system call: no file is lost, and no temporary file remains.
#include "platform/host/files/FileAttributes.h"
#include "platform/host/files/FileStatus.h"
#include "platform/host/files/Folders.h"
#include "platform/host/files/MountPoints.h"
#include "platform/host/files/PublishMechanisms.h"
#include "tests/platform/host/trash/TrashTesting.h"
#include "tests/support/IsolatedProcess.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace kestrine {
namespace {

using testing::bytesOf;
using ::testing::ElementsAre;
using testing::failSystemCall;
using ::testing::IsEmpty;
using testing::isEmptyTrash;
using testing::namesInFolder;
using testing::readFile;
using testing::recordedPath;
using testing::runIsolated;
using testing::runWithOwnMounts;
using testing::TemporaryFolder;

struct FailingCall {
    const char* name;
    long number;
    int error;
};

/// The system calls that move an item to the trash, except the one that removes files.
constexpr FailingCall callsOnTheWay[] = {
    {"fsync", SYS_fsync, EIO},
    {"write", SYS_write, ENOSPC},
    {"pread64", SYS_pread64, EIO},
    {"renameat2", SYS_renameat2, EIO},
    {"renameat2", SYS_renameat2, EINVAL},
    {"mkdirat", SYS_mkdirat, EIO},
    {"symlinkat", SYS_symlinkat, ENOSPC},
    {"fchmod", SYS_fchmod, EPERM},
    {"fchown", SYS_fchown, EPERM},
    {"utimensat", SYS_utimensat, EPERM},
    {"getdents64", SYS_getdents64, EIO},
    {"flistxattr", SYS_flistxattr, EIO},
    {"readlinkat", SYS_readlinkat, EIO},
    {"fcntl", SYS_fcntl, EMFILE},
    {"openat", SYS_openat, EMFILE},
    {"newfstatat", SYS_newfstatat, EIO},
    {"statx", SYS_statx, EIO},
    {"faccessat2", SYS_faccessat2, EIO},
    {"fadvise64", SYS_fadvise64, EIO},
};

/// Runs the steps in a child process in which one call fails. The results are checked from outside.
void runWithFailingCall(const FailingCall& call, const std::function<void()>& steps) {
    runIsolated([&] {
        if (!failSystemCall(call.number, call.error))
            GTEST_SKIP() << "this system permits no filter of system calls";
        steps();
    });
}

using FailingPublication = ::testing::TestWithParam<FailingCall>;

TEST_P(FailingPublication, theNextMechanismIsUsedOrNothingRemains) {
    const TemporaryFolder folder;
    folder.write("a.jpg", "old");
    const auto candidates = [&](unsigned attempt) { return folder / (attempt == 0 ? "a.jpg" : "b.jpg"); };
    runWithFailingCall(GetParam(),
                       [&] { (void)publishNewFile(candidates, bytesOf("new"), Durability::synced); });
    const bool published = isTaken(folder / "b.jpg");
    EXPECT_EQ(namesInFolder(folder.path()).size(), published ? 2u : 1u);
    EXPECT_EQ(readFile(folder / "b.jpg"), published ? "new" : "");
    EXPECT_EQ(readFile(folder / "a.jpg"), "old");
}

TEST_P(FailingPublication, aReplacedFileHasTheOldContentOrTheNew) {
    const TemporaryFolder folder;
    const std::string path = folder.write("preferences", "old");
    runWithFailingCall(GetParam(), [&] { (void)replaceFile(path, bytesOf("new")); });
    EXPECT_THAT(readFile(path), ::testing::AnyOf("old", "new"));
    EXPECT_THAT(namesInFolder(folder.path()), ElementsAre("preferences"));
}

std::string nameOfCall(const ::testing::TestParamInfo<FailingCall>& test) {
    return std::string(test.param.name) + "_" + std::to_string(test.param.error);
}

INSTANTIATE_TEST_SUITE_P(
    Calls, FailingPublication,
    ::testing::Values(FailingCall{"fsync", SYS_fsync, EIO}, FailingCall{"write", SYS_write, EDQUOT},
                      FailingCall{"linkat", SYS_linkat, EPERM}, FailingCall{"linkat", SYS_linkat, ENOENT},
                      FailingCall{"linkat", SYS_linkat, ENOSPC}, FailingCall{"openat", SYS_openat, EMFILE},
                      FailingCall{"fcntl", SYS_fcntl, EMFILE}, FailingCall{"fchmod", SYS_fchmod, EPERM}),
    nameOfCall);

TEST(FailingSystem, withoutLinksAndExclusiveRenamesANameIsReserved) {
    const TemporaryFolder folder;
    folder.write("a.jpg", "old");
    const auto candidates = [&](unsigned attempt) { return folder / (attempt == 0 ? "a.jpg" : "b.jpg"); };
    runIsolated([&] {
        if (!failSystemCall(SYS_linkat, EPERM) || !failSystemCall(SYS_renameat2, EINVAL))
            GTEST_SKIP() << "this system permits no filter of system calls";
        EXPECT_EQ(*publishNewFile(candidates, bytesOf("new"), Durability::cached), folder / "b.jpg");
    });
    EXPECT_EQ(readFile(folder / "a.jpg") + readFile(folder / "b.jpg"), "oldnew");
}

TEST(FailingSystem, aFileThatCannotBeSyncedIsNotPublished) {
    const TemporaryFolder folder;
    const auto candidates = [&](unsigned) { return folder / "a.jpg"; };
    for (const bool nameless : {true, false})
        runIsolated([&] {
            if (!failSystemCall(SYS_fsync, EIO))
                GTEST_SKIP() << "this system permits no filter of system calls";
            EXPECT_EQ(publishNewFile(candidates, bytesOf("new"), Durability::synced, {nameless, {}})
                          .failure()
                          .reason,
                      Reason::inputOutput);
            EXPECT_THAT(namesInFolder(folder.path()), IsEmpty());
        });
}

TEST(FailingSystem, missingRenameMechanismsAreNotTriedAgain) {
    const TemporaryFolder folder;
    folder.write("a", "content");
    runIsolated([&] {
        if (!failSystemCall(SYS_linkat, EPERM) || !failSystemCall(SYS_renameat2, EINVAL))
            GTEST_SKIP() << "this system permits no filter of system calls";
        RenameMechanisms mechanisms;
        const FolderEntry from{AT_FDCWD, folder / "a"}, to{AT_FDCWD, folder / "b"};
        EXPECT_EQ(renameWithoutReplacing(from, to, mechanisms), 0);
        EXPECT_FALSE(mechanisms.exclusiveRename || mechanisms.hardLink);
    });
    EXPECT_EQ(readFile(folder / "b"), "content");
}

TEST(FailingSystem, aFolderThatTheSystemCannotSyncCountsAsSynced) {
    const TemporaryFolder folder;
    const Result<FileDescriptor> opened = openFolder(folder.path());
    ASSERT_TRUE(opened);
    for (const int error : {EINVAL, EBADF, EROFS, EOPNOTSUPP, ENOSYS, EIO, ENOSPC})
        runIsolated([&] {
            if (!failSystemCall(SYS_fsync, error))
                GTEST_SKIP() << "this system permits no filter of system calls";
            EXPECT_EQ(syncFolder(opened->number()).ok(), error != EIO && error != ENOSPC) << error;
        });
}

TEST(FailingSystem, anErrorDuringListingIsAFailure) {
    const TemporaryFolder folder;
    folder.write("a", "content");
    const Result<FileDescriptor> opened = openFolder(folder.path());
    ASSERT_TRUE(opened);
    runIsolated([&] {
        if (!failSystemCall(SYS_getdents64, EIO))
            GTEST_SKIP() << "this system permits no filter of system calls";
        EXPECT_FALSE(namesIn(opened->number()));
    });
}

TEST(FailingSystem, anEntryOfUnknownMountCountsAsMountPoint) {
    const TemporaryFolder folder;
    folder.write("a", "content");
    const Result<FileDescriptor> opened = openFolder(folder.path());
    ASSERT_TRUE(opened);
    EXPECT_FALSE(isMountPoint({opened->number(), "a"}));
    runIsolated([&] {
        if (!failSystemCall(SYS_statx, EIO))
            GTEST_SKIP() << "this system permits no filter of system calls";
        EXPECT_TRUE(isMountPoint({opened->number(), "a"}));
    });
}

TEST(FailingSystem, theTopFolderOfAnUnknownMountIsAFailure) {
    const TemporaryFolder folder;
    runIsolated([&] {
        if (!failSystemCall(SYS_statx, EIO))
            GTEST_SKIP() << "this system permits no filter of system calls";
        EXPECT_EQ(topFolderOf(folder.path().string()).failure().reason, Reason::inputOutput);
    });
}

TEST(FailingSystem, anItemThatCannotBeDeletedFromTheTrashKeepsItsRecord) {
    const TemporaryFolder folder;
    folder.write("album/a.jpg", "content");
    const Result<FileDescriptor> opened = openFolder(folder.path());
    const Result<TrashFolder> trash = TrashFolder::openHome(folder / "Trash");
    ASSERT_TRUE(opened && trash);
    const Result<TrashedItem> item = trash->moveIn({opened->number(), "album"}, "album", "record");
    ASSERT_TRUE(item);
    runIsolated([&] {
        if (!failSystemCall(SYS_getdents64, EIO))
            GTEST_SKIP() << "this system permits no filter of system calls";
        trash->remove(*item);
    });
    EXPECT_EQ(readFile(item->path + "/a.jpg"), "content");
    EXPECT_EQ(readFile(item->infoPath), "record");
}

TEST(FailingSystem, anErrorOnClosingFailsTheWriting) {
    const TemporaryFolder folder;
    const FileDescriptor file(::open(folder.write("a", "content").c_str(), O_RDWR | O_CLOEXEC));
    runIsolated([&] {
        if (!failSystemCall(SYS_close, EIO))
            GTEST_SKIP() << "this system permits no filter of system calls";
        EXPECT_EQ(finishWriting(file.number(), Durability::cached).failure().reason, Reason::inputOutput);
    });
}

TEST(FailingSystem, aFolderWhoseModeCannotBeSetIsForTheUserOnly) {
    const TemporaryFolder folder;
    runIsolated([&] {
        if (!failSystemCall(SYS_fchmod, EPERM))
            GTEST_SKIP() << "this system permits no filter of system calls";
        struct stat attributes {};
        attributes.st_mode = 0777;
        ASSERT_TRUE(makeFolderWithAttributes(folder / "new", attributes));
        EXPECT_EQ(attributesOf(folder / "new", FollowLinks::no)->st_mode & 07777, 0700u);
    });
}

class FailingTrash : public testing::TrashTest, public ::testing::WithParamInterface<FailingCall> {
protected:
    const std::string disk_ = work_ + "/disk";

    void makeAlbum(const std::string& folder) const {
        ASSERT_TRUE(makePrivateFolders(folder + "/sub"));
        folder_.write(std::filesystem::relative(folder + "/sub/a.jpg", folder_.path()).string(), "content");
        std::filesystem::create_symlink("a.jpg", folder + "/sub/link");
    }

    static bool isWholeAlbum(const std::string& folder) {
        std::error_code absent;
        return readFile(folder + "/sub/a.jpg") == "content"
               && std::filesystem::read_symlink(folder + "/sub/link", absent) == "a.jpg";
    }

    /// Moves the album to the trash with a failing call, and checks that it is complete in one place.
    void moveAlbumToTrash(const std::string& album) const {
        runWithFailingCall(GetParam(), [&] { (void)trash(album); });
        if (isTaken(album)) {
            EXPECT_TRUE(isWholeAlbum(album));
            EXPECT_TRUE(isEmptyTrash(trash_));
        } else {
            EXPECT_TRUE(isWholeAlbum(trash_ + "/files/album"));
            EXPECT_EQ(recordedPath({"", trash_ + "/info/album.trashinfo"}), album);
        }
    }
};

TEST_P(FailingTrash, aMovedFolderIsCompleteInOnePlace) {
    makeAlbum(work_ + "/album");
    moveAlbumToTrash(work_ + "/album");
}

TEST_P(FailingTrash, aCopiedFolderIsCompleteInOnePlace) {
    runWithOwnMounts([&] {
        testing::mountFileSystem(disk_, 1024);
        folder_.write("work/disk/.Trash-" + std::to_string(::geteuid()), "in the way");
        makeAlbum(disk_ + "/album");
        moveAlbumToTrash(disk_ + "/album");
    });
}

INSTANTIATE_TEST_SUITE_P(Calls, FailingTrash, ::testing::ValuesIn(callsOnTheWay), nameOfCall);

} // namespace
} // namespace kestrine
