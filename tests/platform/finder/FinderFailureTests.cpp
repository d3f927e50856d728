// Copying and moving when a disk is full, something is mounted, or a system call fails: each item is complete
// in one place, no item is lost, and no hidden name is left.
#include "platform/host/files/ExtendedAttributes.h"
#include "platform/host/files/FileDescriptor.h"
#include "tests/platform/finder/FinderTesting.h"
#include "tests/support/InterposedCalls.h"
#include "tests/support/IsolatedProcess.h"
#include "tests/support/SystemFeatures.h"

#include <cerrno>
#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/syscall.h>

namespace kestrine {
namespace {

using ::testing::ElementsAre;
using testing::failSystemCall;
using ::testing::IsEmpty;
using testing::keepsAttributes;
using testing::mountAgain;
using testing::mountFileSystem;
using testing::namesIn;
using testing::numberOf;
using testing::readFile;
using testing::runIsolated;
using testing::runWithOwnMounts;

constexpr std::int32_t diskIsFull = -34, noAttributes = -1426, noRights = -5000, forbidden = -10006;

class FinderFailure : public testing::FinderTest {
protected:
    const std::string disk_ = folder_ / "disk";
    const std::string large_ = std::string(200'000, 'x');
};

TEST_F(FinderFailure, aFullDiskKeepsNoIncompleteItem) {
    runWithOwnMounts([&] {
        mountFileSystem(disk_, 128);
        write(disk_ + "/album/old.jpg", "old");
        const std::string file = write(from_ + "/a.jpg", large_);
        write(from_ + "/album/1", "small");
        write(from_ + "/album/2", large_);
        for (const auto operation : {finderDuplicate, finderMove}) {
            EXPECT_EQ(numberOf(operation({file}, disk_, Replacing::no)), diskIsFull);
            EXPECT_EQ(numberOf(operation({from_ + "/album"}, disk_, Replacing::yes)), diskIsFull);
        }
        EXPECT_THAT(namesIn(disk_), ElementsAre("album"));
        EXPECT_THAT(namesIn(disk_ + "/album"), ElementsAre("old.jpg"));
        EXPECT_EQ(readFile(file) + readFile(from_ + "/album/1") + readFile(from_ + "/album/2"),
                  large_ + "small" + large_);
    });
}

TEST_F(FinderFailure, aFullDiskStopsADuplicateInItsOwnFolder) {
    runWithOwnMounts([&] {
        mountFileSystem(disk_, 256);
        const std::string file = write(disk_ + "/a.jpg", large_);
        EXPECT_EQ(numberOf(finderDuplicate({file}, disk_, Replacing::no)), diskIsFull);
        EXPECT_THAT(namesIn(disk_), ElementsAre("a.jpg"));
    });
}

TEST_F(FinderFailure, betweenAFolderAndItsBindMountAnItemIsCopied) {
    runWithOwnMounts([&] {
        mountAgain(to_, folder_ / "again");
        EXPECT_EQ(finderMove({write(from_ + "/a.jpg")}, folder_ / "again", Replacing::no), std::nullopt);
        EXPECT_EQ(readFile(to_ + "/a.jpg"), "content");
        EXPECT_EQ(finderMove({to_ + "/a.jpg"}, folder_ / "again", Replacing::yes), std::nullopt)
            << "it is already there";
        EXPECT_EQ(readFile(to_ + "/a.jpg"), "content");
    });
}

TEST_F(FinderFailure, mountPointsAndFoldersThatContainSomeStay) {
    runWithOwnMounts([&] {
        mountFileSystem(from_ + "/disk", 64);
        makeFolder(from_ + "/album");
        mountFileSystem(from_ + "/album/disk", 64);
        write(to_ + "/disk");
        write(to_ + "/album");
        for (const auto operation : {finderDuplicate, finderMove})
            for (const char* name : {"/disk", "/album"}) {
                EXPECT_EQ(numberOf(operation({from_ + name}, folder_.path(), Replacing::no)), forbidden);
                EXPECT_EQ(numberOf(operation({to_ + name}, from_, Replacing::yes)), forbidden)
                    << "they are not replaced either";
            }
        EXPECT_THAT(namesIn(from_), ElementsAre("album", "disk"));
        EXPECT_THAT(namesIn(to_), ElementsAre("album", "disk"));
    });
}

TEST_F(FinderFailure, fromAReadOnlyDiskItemsAreCopiedButNotMoved) {
    runWithOwnMounts([&] {
        mountFileSystem(disk_, 64);
        write(disk_ + "/album/a.jpg");
        ASSERT_EQ(::mount(nullptr, disk_.c_str(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr), 0);
        EXPECT_EQ(numberOf(finderMove({disk_ + "/album"}, to_, Replacing::no)), noRights);
        EXPECT_THAT(namesIn(to_), IsEmpty());
        EXPECT_EQ(finderDuplicate({disk_ + "/album"}, to_, Replacing::no), std::nullopt);
        EXPECT_EQ(readFile(to_ + "/album/a.jpg"), "content");
        EXPECT_EQ(numberOf(finderDuplicate({from_}, disk_, Replacing::no)), noRights);
    });
}

TEST_F(FinderFailure, anAttributeThatTheOtherDiskCannotStoreStopsTheMove) {
    runWithOwnMounts([&] {
        mountFileSystem(disk_, 1024);
        if (!keepsAttributes(disk_, 60'000) || keepsAttributes(to_, 60'000))
            GTEST_SKIP() << "both file systems keep attributes of that size, or neither does";
        const std::string file = write(disk_ + "/a.jpg");
        ASSERT_TRUE(setExtendedAttribute(file, "user.large", Bytes(60'000)));
        EXPECT_NE(finderMove({file}, to_, Replacing::no), std::nullopt);
        EXPECT_EQ(getExtendedAttribute(file, "user.large")->size(), 60'000u);
        EXPECT_THAT(namesIn(to_), IsEmpty());
    });
}

TEST_F(FinderFailure, withoutAttributesACopyLeavesThemOutAndAMoveIsRefused) {
    runWithOwnMounts([&] {
        makeFolder(disk_);
        if (::mount("ramfs", disk_.c_str(), "ramfs", 0, nullptr) != 0)
            GTEST_SKIP() << "this system mounts no file system without attributes";
        if (!keepsAttributes() || keepsAttributes(disk_))
            GTEST_SKIP() << "both file systems keep attributes, or neither does";
        const std::string file = write(from_ + "/album/a.jpg");
        for (const std::string& item : {file, from_ + "/album"})
            ASSERT_TRUE(setExtendedAttribute(item, "user.xdg.comment", Bytes(3, 'x')));
        EXPECT_EQ(finderDuplicate({file, from_ + "/album"}, disk_, Replacing::no), std::nullopt);
        EXPECT_EQ(readFile(disk_ + "/a.jpg") + readFile(disk_ + "/album/a.jpg"), "contentcontent");
        EXPECT_EQ(numberOf(finderMove({from_ + "/album"}, disk_, Replacing::yes)), noAttributes);
        EXPECT_EQ(getExtendedAttribute(file, "user.xdg.comment")->size(), 3u);
        EXPECT_THAT(namesIn(disk_), ElementsAre("a.jpg", "album"));
    });
}

/// Sets an inode flag: FS_IMMUTABLE_FL prevents the removal of a file, even by root, and FS_APPEND_FL that of
/// the items in a folder. False where the file system has no such flags.
bool protect(const std::string& path, int flag = FS_IMMUTABLE_FL) {
    const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    return file.isOpen() && ::ioctl(file.number(), FS_IOC_SETFLAGS, &flag) == 0;
}

TEST_F(FinderFailure, anOriginalThatCannotBeRemovedLeavesNoCopy) {
    runWithOwnMounts([&] {
        mountFileSystem(disk_, 1024);
        const std::string file = write(disk_ + "/a.jpg", "new");
        if (!protect(file))
            GTEST_SKIP() << "files cannot be protected against removal here";
        EXPECT_EQ(numberOf(finderMove({file}, to_, Replacing::no)), noRights);
        EXPECT_THAT(namesIn(to_), IsEmpty());
        write(to_ + "/a.jpg", "old");
        EXPECT_EQ(numberOf(finderMove({file}, to_, Replacing::yes)), noRights);
        EXPECT_EQ(readFile(to_ + "/a.jpg"), "new") << "the old item was replaced, so the copy must stay";
        EXPECT_EQ(readFile(file), "new");
        EXPECT_THAT(namesIn(to_), ElementsAre("a.jpg"));
    });
}

/// Runs `operation` and returns whether a folder is synced while `condition` is true.
bool syncsAFolderWhile(const std::function<bool()>& condition,
                       const std::function<FinderOutcome()>& operation) {
    bool synced = false;
    testing::InterposedCalls calls;
    calls.onSync = [&](int file) {
        struct stat status {};
        synced |= ::fstat(file, &status) == 0 && S_ISDIR(status.st_mode) && condition();
        return 0;
    };
    EXPECT_EQ(operation(), std::nullopt);
    return synced;
}

TEST_F(FinderFailure, theFolderOfACopyIsSynced) {
    const std::string file = write(from_ + "/a.jpg");
    EXPECT_TRUE(syncsAFolderWhile([&] { return std::filesystem::exists(to_ + "/a.jpg"); },
                                  [&] { return finderDuplicate({file}, to_, Replacing::no); }));
    EXPECT_TRUE(syncsAFolderWhile([&] { return std::filesystem::exists(from_ + "/a copy.jpg"); },
                                  [&] { return finderDuplicate({file}, from_, Replacing::no); }));
}

TEST_F(FinderFailure, aMoveBetweenVolumesSyncsTheFolderBeforeTheOriginalIsRemoved) {
    runWithOwnMounts([&] {
        mountFileSystem(disk_, 64);
        const std::string file = write(disk_ + "/a.jpg");
        const auto areBothThere = [&] {
            return std::filesystem::exists(file) && std::filesystem::exists(to_ + "/a.jpg");
        };
        EXPECT_TRUE(syncsAFolderWhile(areBothThere, [&] { return finderMove({file}, to_, Replacing::no); }));
    });
}

TEST_F(FinderFailure, whenAPartOfTheOriginalIsRemovedTheCopyStays) {
    runWithOwnMounts([&] {
        mountFileSystem(disk_, 1024);
        for (const char* name : {"1.jpg", "sub/a.jpg", "2.jpg"})
            write(disk_ + "/album/" + name,
                  "new"); // in any order of listing, one file comes before the folder
        if (!protect(disk_ + "/album/sub", FS_APPEND_FL))
            GTEST_SKIP() << "folders cannot be protected against removal here";
        EXPECT_EQ(numberOf(finderMove({disk_ + "/album"}, to_, Replacing::no)), noRights);
        EXPECT_LT(namesIn(disk_ + "/album").size(), 3u) << "one file was removed";
        for (const char* name : {"1.jpg", "sub/a.jpg", "2.jpg"})
            EXPECT_EQ(readFile(to_ + "/album/" + name), "new") << name;
    });
}

TEST_F(FinderFailure, aMoveBetweenVolumesReportsThatTheOldItemCannotBeRemoved) {
    runWithOwnMounts([&] {
        mountFileSystem(disk_, 1024);
        write(from_ + "/album/new.jpg");
        if (!protect(write(disk_ + "/album/old.jpg")))
            GTEST_SKIP() << "files cannot be protected against removal here";
        EXPECT_EQ(numberOf(finderMove({from_ + "/album"}, disk_, Replacing::yes)), -36);
        EXPECT_THAT(namesIn(disk_), ElementsAre("album", "album replaced"));
        EXPECT_THAT(namesIn(from_), IsEmpty());
    });
}

TEST_F(FinderFailure, whereNamesCannotBeExchangedTheOldItemIsRenamedFirst) {
    for (const int error : {EINVAL, ENOSYS, EOPNOTSUPP})
        runIsolated([&] {
            if (!failSystemCall(SYS_renameat2, error))
                GTEST_SKIP() << "this system permits no filter of system calls";
            for (const auto operation : {finderDuplicate, finderMove}) {
                write(from_ + "/album/new.jpg");
                write(to_ + "/album/old.jpg");
                EXPECT_EQ(operation({from_ + "/album"}, to_, Replacing::yes), std::nullopt) << error;
                EXPECT_THAT(namesIn(to_), ElementsAre("album"));
                EXPECT_THAT(namesIn(to_ + "/album"), ElementsAre("new.jpg"));
            }
        });
}

TEST_F(FinderFailure, aDuplicateThatGetsNoNameIsRemoved) {
    const std::string file = write(from_ + "/a.jpg");
    runIsolated([&] {
        if (!failSystemCall(SYS_renameat2, EIO))
            GTEST_SKIP() << "this system permits no filter of system calls";
        EXPECT_NE(finderDuplicate({file}, from_, Replacing::no), std::nullopt);
        EXPECT_THAT(namesIn(from_), ElementsAre("a.jpg"));
    });
}

TEST_F(FinderFailure, aReplacedItemThatCannotBeRemovedGetsAVisibleName) {
    for (const auto operation : {finderDuplicate, finderMove})
        runIsolated([&] {
            write(from_ + "/album/new.jpg", "new");
            std::filesystem::remove_all(to_);
            write(to_ + "/album/old.jpg", "old");
            if (!failSystemCall(SYS_unlinkat, EIO))
                GTEST_SKIP() << "this system permits no filter of system calls";
            const FinderOutcome outcome = operation({from_ + "/album"}, to_, Replacing::yes);
            EXPECT_EQ(numberOf(outcome), -36);
            EXPECT_TRUE(outcome->message.contains(u"album replaced")) << outcome->message.utf8();
            EXPECT_THAT(namesIn(to_), ElementsAre("album", "album replaced"));
            EXPECT_EQ(readFile(to_ + "/album/new.jpg"), "new");
            EXPECT_EQ(readFile(to_ + "/album replaced/old.jpg"), "old");
        });
}

struct FailingCall {
    const char* name;
    long number;
    int error;
};

/// Every system call of copying and moving, except the one that removes items.
constexpr FailingCall callsOnTheWay[] = {
    {"fsync", SYS_fsync, EIO},           {"write", SYS_write, ENOSPC},
    {"pread64", SYS_pread64, EIO},       {"renameat", SYS_renameat, EIO},
    {"renameat2", SYS_renameat2, EIO},   {"renameat2", SYS_renameat2, EINVAL},
    {"mkdirat", SYS_mkdirat, EIO},       {"symlinkat", SYS_symlinkat, ENOSPC},
    {"fchmod", SYS_fchmod, EPERM},       {"fchown", SYS_fchown, EPERM},
    {"utimensat", SYS_utimensat, EPERM}, {"getdents64", SYS_getdents64, EIO},
    {"flistxattr", SYS_flistxattr, EIO}, {"readlinkat", SYS_readlinkat, EIO},
    {"fcntl", SYS_fcntl, EMFILE},        {"openat", SYS_openat, EMFILE},
    {"newfstatat", SYS_newfstatat, EIO}, {"statx", SYS_statx, EIO},
    {"faccessat2", SYS_faccessat2, EIO}, {"linkat", SYS_linkat, EIO},
};

class FailingTransfer : public FinderFailure, public ::testing::WithParamInterface<FailingCall> {
protected:
    using Operation = FinderOutcome (*)(const std::vector<std::string>&, const std::string&, Replacing);

    static constexpr const char* names[] = {"/a.jpg", "/album"};

    /// A file, or a folder with a file and a link in it.
    static void make(const std::string& path, const std::string& content) {
        if (path.ends_with("/a.jpg")) {
            write(path, content);
            return;
        }
        write(path + "/sub/a.jpg", content);
        std::filesystem::create_symlink("a.jpg", path + "/sub/link");
    }
    /// The content of a whole item; "" when anything is missing.
    static std::string contentOf(const std::string& path) {
        std::error_code absent;
        if (path.ends_with("/a.jpg"))
            return readFile(path);
        return std::filesystem::read_symlink(path + "/sub/link", absent) == "a.jpg"
                   ? readFile(path + "/sub/a.jpg")
                   : "";
    }

    /// Runs the operation with the failing call, then examines both folders.
    void bring(Operation operation, const std::string& name, const std::string& into,
               Replacing replacing) const {
        std::filesystem::remove_all(from_ + name);
        std::filesystem::remove_all(into + name);
        make(from_ + name, "new");
        if (replacing == Replacing::yes)
            make(into + name, "old");
        runIsolated([&] {
            if (!failSystemCall(GetParam().number, GetParam().error))
                GTEST_SKIP() << "this system permits no filter of system calls";
            const FinderOutcome failure = operation({from_ + name}, into, replacing);
            EXPECT_TRUE(failure || contentOf(into + name) == "new") << "a reported success is complete";
        });
        const std::string here = contentOf(from_ + name), there = contentOf(into + name);
        for (const std::string& folder : {from_, into})
            EXPECT_THAT(namesIn(folder), ::testing::AnyOf(IsEmpty(), ElementsAre(name.substr(1))));
        const bool mayHaveGone = operation == finderMove;
        EXPECT_TRUE(here == "new" || (mayHaveGone && there == "new"))
            << "the item is complete in one of the folders";
        EXPECT_TRUE(replacing == Replacing::no || there == "new" || there == "old")
            << "the name has a complete item, old or new";
        std::filesystem::remove_all(from_ + name);
        std::filesystem::remove_all(into + name);
    }
    void bringEveryWay(const std::string& into) const {
        for (const Operation operation : {finderDuplicate, finderMove})
            for (const Replacing replacing : {Replacing::no, Replacing::yes})
                for (const char* name : names)
                    bring(operation, name, into, replacing);
    }
};

TEST_P(FailingTransfer, onOneVolumeNothingIsLost) { bringEveryWay(to_); }

TEST_P(FailingTransfer, betweenVolumesNothingIsLost) {
    runWithOwnMounts([&] {
        mountFileSystem(disk_, 1024);
        bringEveryWay(disk_);
    });
}

INSTANTIATE_TEST_SUITE_P(Calls, FailingTransfer, ::testing::ValuesIn(callsOnTheWay), [](const auto& test) {
    return std::string(test.param.name) + "_" + std::to_string(test.param.error);
});

} // namespace
} // namespace kestrine
