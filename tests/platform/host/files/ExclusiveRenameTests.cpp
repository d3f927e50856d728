#include "platform/host/files/ExclusiveRename.h"
#include "platform/host/files/FileStatus.h"
#include "platform/host/files/Folders.h"
#include "platform/host/files/PathParts.h"
#include "tests/support/InterposedCalls.h"
#include "tests/support/IsolatedProcess.h"
#include "tests/support/TemporaryFolder.h"

#include <cerrno>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace kestrine {
namespace {

using testing::InterposedCalls;
using testing::readFile;
using testing::TemporaryFolder;

/// An entry of a folder that is open as long as this object exists.
class OpenedEntry {
public:
    explicit OpenedEntry(const std::string& path)
        : folder_(openFolder(folderOf(path)).value()), name_(nameOf(path)) {}
    FolderEntry entry() const { return {folder_.number(), name_}; }

private:
    const FileDescriptor folder_;
    const std::string name_;
};

/// Each test runs with each mechanism.
class ExclusiveRename : public ::testing::TestWithParam<RenameMechanisms> {
protected:
    int rename(const std::string& from, const std::string& to) {
        RenameMechanisms mechanisms = GetParam();
        const OpenedEntry old(folder_ / from), renamed(folder_ / to);
        return renameWithoutReplacing(old.entry(), renamed.entry(), mechanisms);
    }

    const TemporaryFolder folder_;
};

TEST_P(ExclusiveRename, aFileGetsItsNewName) {
    folder_.write("a", "content");
    EXPECT_EQ(rename("a", "b"), 0);
    EXPECT_EQ(readFile(folder_ / "b"), "content");
    EXPECT_FALSE(isTaken(folder_ / "a"));
}

TEST_P(ExclusiveRename, aNameInUseIsNotReplaced) {
    folder_.write("a", "new");
    folder_.write("b", "old");
    EXPECT_EQ(rename("a", "b"), EEXIST);
    EXPECT_EQ(readFile(folder_ / "a") + readFile(folder_ / "b"), "newold");
}

TEST_P(ExclusiveRename, aDanglingLinkCountsAsInUse) {
    folder_.write("a", "new");
    std::filesystem::create_symlink("nowhere", folder_ / "b");
    EXPECT_EQ(rename("a", "b"), EEXIST);
    EXPECT_TRUE(std::filesystem::is_symlink(folder_ / "b"));
    EXPECT_FALSE(isTaken(folder_ / "nowhere"));
}

TEST_P(ExclusiveRename, foldersAndLinksAreRenamedToo) {
    folder_.write("folder/inside", "x");
    std::filesystem::create_symlink("nowhere", folder_ / "link");
    EXPECT_EQ(rename("folder", "folder2"), 0);
    EXPECT_EQ(rename("link", "link2"), 0);
    EXPECT_EQ(readFile(folder_ / "folder2/inside"), "x");
    EXPECT_EQ(std::filesystem::read_symlink(folder_ / "link2"), "nowhere");
    EXPECT_FALSE(isTaken(folder_ / "folder") || isTaken(folder_ / "link"));
}

TEST_P(ExclusiveRename, anEmptyFolderIsNotReplacedByAFolder) {
    folder_.write("folder/inside", "x");
    ASSERT_TRUE(makeFolder(folder_ / "empty"));
    EXPECT_EQ(rename("folder", "empty"), EEXIST);
    EXPECT_EQ(readFile(folder_ / "folder/inside"), "x");
}

TEST_P(ExclusiveRename, afterAnErrorNoReservationRemains) {
    EXPECT_EQ(rename("none", "b"), ENOENT);
    folder_.write("folder/inside", "x");
    EXPECT_NE(rename("folder", "folder/below"), 0);
    EXPECT_FALSE(isTaken(folder_ / "b") || isTaken(folder_ / "folder/below"));
}

TEST_P(ExclusiveRename, renamingAFolderSwitchesOffNoMechanismForFiles) {
    RenameMechanisms mechanisms = GetParam();
    folder_.write("folder/inside", "x");
    const OpenedEntry from(folder_ / "folder"), to(folder_ / "folder2");
    ASSERT_EQ(renameWithoutReplacing(from.entry(), to.entry(), mechanisms), 0);
    EXPECT_EQ(mechanisms.hardLink, GetParam().hardLink);
}

TEST_P(ExclusiveRename, ifTheOldNameCannotBeRemovedThereIsNoNewName) {
    if (::geteuid() != 0)
        GTEST_SKIP() << "only root can prepare files of another user";
    folder_.write("sticky/a", "x");
    folder_.write("open/b", "x");
    for (const auto& [name, mode] : {std::pair{"", 0755}, std::pair{"sticky", 01777},
                                     std::pair{"sticky/a", 0666}, std::pair{"open", 0777}})
        ASSERT_EQ(::chmod((folder_ / name).c_str(), static_cast<mode_t>(mode)), 0);
    testing::runAsOrdinaryUser([&] { EXPECT_NE(rename("sticky/a", "open/a"), 0); });
    EXPECT_EQ(readFile(folder_ / "sticky/a"), "x");
    EXPECT_FALSE(isTaken(folder_ / "open/a"));
}

TEST_P(ExclusiveRename, anotherFileSystemGivesItsOwnError) {
    const TemporaryFolder elsewhere("/dev/shm");
    struct stat here {
    }, there{};
    ASSERT_EQ(::stat(folder_.path().c_str(), &here) + ::stat(elsewhere.path().c_str(), &there), 0);
    if (here.st_dev == there.st_dev)
        GTEST_SKIP() << "/dev/shm is on the file system of the temporary folder";
    RenameMechanisms mechanisms = GetParam();
    const OpenedEntry from(folder_.write("a", "x")), to(elsewhere / "a");
    EXPECT_EQ(renameWithoutReplacing(from.entry(), to.entry(), mechanisms), EXDEV);
    EXPECT_EQ(readFile(folder_ / "a"), "x");
    EXPECT_FALSE(isTaken(elsewhere / "a"));
}

std::string mechanismName(const ::testing::TestParamInfo<RenameMechanisms>& test) {
    constexpr const char* names[] = {"exclusiveRename", "hardLink", "reservation"};
    return names[test.index];
}

INSTANTIATE_TEST_SUITE_P(Mechanisms, ExclusiveRename,
                         ::testing::Values(RenameMechanisms{true, true}, RenameMechanisms{false, true},
                                           RenameMechanisms{false, false}),
                         mechanismName);

TEST(RenameMechanisms, aFileThatIsPutUnderTheOldNameAfterTheLinkStays) {
    const TemporaryFolder folder;
    folder.write("a", "old");
    folder.write("other", "new");
    const OpenedEntry from(folder / "a"), to(folder / "b");
    InterposedCalls calls;
    calls.onRename = [&](const std::string& oldName, const std::string&) {
        if (oldName == "a")
            std::filesystem::rename(folder / "other", folder / "a");
        return 0;
    };
    RenameMechanisms mechanisms{false, true};
    EXPECT_EQ(renameWithoutReplacing(from.entry(), to.entry(), mechanisms), 0);
    EXPECT_EQ(readFile(folder / "b"), "old");
    EXPECT_EQ(readFile(folder / "a"), "new");
}

TEST(RenameMechanisms, anItemThatIsRenamedAgainAtOnceKeepsNoSecondName) {
    const TemporaryFolder folder;
    folder.write("a", "content");
    const OpenedEntry from(folder / "a"), to(folder / "b");
    InterposedCalls calls;
    calls.onRename = [&](const std::string& oldName, const std::string&) {
        if (oldName == "a") // after the link
            std::filesystem::rename(folder / "b", folder / "c");
        return 0;
    };
    RenameMechanisms mechanisms{false, true};
    EXPECT_EQ(renameWithoutReplacing(from.entry(), to.entry(), mechanisms), 0);
    EXPECT_EQ(readFile(folder / "c"), "content");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path()), {}), 1);
}

TEST(PutBack, anItemThatCannotHaveItsNameBackGetsTheNextOne) {
    const TemporaryFolder folder;
    for (const char* name : {"aside", "a.jpg", "a.2.jpg"})
        folder.write(name, name);
    const OpenedEntry aside(folder / "aside"), place(folder / "a.jpg");
    putBack(aside.entry(), place.entry());
    EXPECT_EQ(readFile(folder / "a.3.jpg"), "aside");
    EXPECT_EQ(readFile(folder / "a.jpg") + readFile(folder / "a.2.jpg"), "a.jpga.2.jpg");
}

/// Renames while the system call fails. Returns the error, and in `mechanisms` the remaining mechanisms.
int renameWhileFailing(long call, int error, RenameMechanisms& mechanisms) {
    const TemporaryFolder folder;
    folder.write("a", "content");
    const OpenedEntry from(folder / "a"), to(folder / "b");
    if (!testing::failSystemCall(call, error))
        return -1;
    return renameWithoutReplacing(from.entry(), to.entry(), mechanisms);
}

TEST(RenameMechanisms, whatAFileSystemLacksIsReplacedByTheNextMechanismAndNotTriedAgain) {
    for (const auto& [call, error] :
         {std::pair{SYS_renameat2, EINVAL}, std::pair{SYS_renameat2, ENOSYS},
          std::pair{SYS_renameat2, EOPNOTSUPP}, std::pair{SYS_linkat, EPERM}, std::pair{SYS_linkat, ENOSYS},
          std::pair{SYS_linkat, EOPNOTSUPP}, std::pair{SYS_linkat, EMLINK}})
        testing::runIsolated([call = call, error = error] {
            RenameMechanisms mechanisms{call == SYS_renameat2, true};
            const int result = renameWhileFailing(call, error, mechanisms);
            if (result < 0)
                GTEST_SKIP() << "this system permits no filter of system calls";
            EXPECT_EQ(result, 0) << call << " fails with " << error;
            EXPECT_FALSE(mechanisms.exclusiveRename);
            EXPECT_EQ(mechanisms.hardLink, call == SYS_renameat2);
        });
}

} // namespace
} // namespace kestrine
