// Compatibility with other programs: trash-list and trash-restore of trash-cli read our trash, and gio uses
// the same one.
#include "platform/host/files/FileStatus.h"
#include "platform/host/process/CapturedRun.h"
#include "tests/platform/host/trash/TrashTesting.h"
#include "tests/support/IsolatedProcess.h"

#include <algorithm>
#include <cstdlib>
#include <unistd.h>

namespace kestrine {
namespace {

using ::testing::HasSubstr;
using testing::isEmptyTrash;
using testing::mountFileSystem;
using ::testing::Not;
using testing::readFile;
using testing::recordedPath;
using testing::runIsolated;
using testing::runWithOwnMounts;

class TrashReaders : public testing::TrashTest {
protected:
    void SetUp() override {
        for (const char* program : {"/usr/bin/trash-list", "/usr/bin/trash-restore"})
            if (::access(program, X_OK) != 0)
                GTEST_SKIP() << program << " is not installed (package trash-cli)";
    }

    /// The lines "date time path" of all items.
    std::string list() const { return run({"/usr/bin/trash-list"}); }

    /// Restores the only item whose original place was in `folder`.
    void restore(const std::string& folder) const {
        run({"/bin/sh", "-c", "cd \"$1\" && echo 0 | /usr/bin/trash-restore", "sh", folder});
    }

private:
    std::string run(std::vector<std::string> command) const {
        std::vector<std::string> arguments{"HOME=" + home_, "LC_ALL=C.UTF-8"};
        arguments.insert(arguments.end(), command.begin(), command.end());
        Result<CapturedRun> done = runCapturingOutput("/usr/bin/env", arguments, 10'000'000);
        EXPECT_TRUE(done && done->end.code == 0);
        return done ? done->output : "";
    }
};

TEST_F(TrashReaders, aTrashedFileIsListedWithItsPathAndLocalTime) {
    runIsolated([&] {
        ::setenv("TZ", "SST+11", 1);
        ASSERT_TRUE(trash(folder_.write("work/a.jpg", "content")));
        const std::time_t now = std::time(nullptr);
        const std::string listed = list();
        std::tm read{};
        ASSERT_NE(::strptime(listed.c_str(), "%Y-%m-%d %H:%M:%S", &read), nullptr) << listed;
        EXPECT_NEAR(static_cast<double>(std::mktime(&read)), static_cast<double>(now), 60);
        EXPECT_THAT(listed, HasSubstr(" " + work_ + "/a.jpg\n"));
    });
}

TEST_F(TrashReaders, everyItemIsListedUnderItsOwnPath) {
    for (const char* name : {"100% fun.jpg", "caf\xC3\xA9", "a+b", "[x]=;#.png", "n\nl"}) {
        ASSERT_TRUE(trash(folder_.write("work/" + std::string(name), "content")));
        EXPECT_THAT(list(), HasSubstr(" " + work_ + "/" + name + "\n"));
    }
}

TEST_F(TrashReaders, aFileIsRestoredToItsOriginalPath) {
    for (const char* name : {"a.jpg", "100% fun %n.jpg", "caf\xC3\xA9", "n\nl", "a+b"}) {
        const std::string file = folder_.write("work/" + std::string(name), name);
        ASSERT_TRUE(trash(file));
        ASSERT_FALSE(isTaken(file));
        restore(work_);
        EXPECT_EQ(readFile(file), name);
        EXPECT_TRUE(isEmptyTrash(trash_));
    }
}

TEST_F(TrashReaders, aFolderIsRestoredWithItsContent) {
    const std::string file = folder_.write("work/album/sub/a.jpg", "content");
    ASSERT_TRUE(trash(work_ + "/album"));
    EXPECT_THAT(list(), HasSubstr(work_ + "/album\n"));
    restore(work_);
    EXPECT_EQ(readFile(file), "content");
}

TEST_F(TrashReaders, aLongNameIsRestoredCompletely) {
    const std::string file = folder_.write("work/" + std::string(251, 'n') + ".jpg", "content");
    ASSERT_TRUE(trash(file));
    restore(work_);
    EXPECT_EQ(readFile(file), "content");
}

TEST_F(TrashReaders, theSecondOfTwoItemsWithOneNameIsRestored) {
    const std::string first = folder_.write("work/one/a.jpg", "first");
    const std::string second = folder_.write("work/two/a.jpg", "second");
    ASSERT_TRUE(trash(first) && trash(second));
    restore(work_ + "/two");
    EXPECT_EQ(readFile(second), "second");
    EXPECT_FALSE(isTaken(first));
    EXPECT_THAT(list(), Not(HasSubstr(second)));
}

TEST_F(TrashReaders, itemsOfGioAndOurItemsCoexist) {
    const char* const gio = "/usr/bin/gio";
    if (::access(gio, X_OK) != 0)
        GTEST_SKIP() << gio << " is not installed (package libglib2.0-bin)";
    for (const char* name : {"a.jpg", "100% fun %n.jpg", "caf\xC3\xA9", "n\nl", "a+b", "\xFF"}) {
        const std::string first = folder_.write("work/" + std::string(name), "gio's");
        const Result<CapturedRun> done = runCapturingOutput(
            "/usr/bin/env", {"HOME=" + home_, "XDG_DATA_HOME=", "GIO_USE_VFS=local", gio, "trash", first}, 0);
        if (!done || done->end.code != 0)
            GTEST_SKIP() << "gio does not support the trash on this file system";
        const TrashedItem theirs{trash_ + "/files/" + name, trash_ + "/info/" + name + ".trashinfo"};
        const Result<TrashedItem> ours = trash(folder_.write("work/" + std::string(name), "ours"));
        ASSERT_TRUE(ours);
        EXPECT_EQ(readFile(theirs.path) + readFile(ours->path), "gio'sours");
        EXPECT_EQ(recordedPath(theirs), recordedPath(*ours));
    }
}

TEST_F(TrashReaders, anItemInTheTrashOfADiskIsListedAndRestored) {
    runWithOwnMounts([&] {
        const std::string disk = work_ + "/disk";
        mountFileSystem(disk, 1024);
        const std::string file = folder_.write("work/disk/sub/100% fun.jpg", "content");
        Result<TrashedItem> item = trash(file);
        ASSERT_TRUE(item && item->path.starts_with(disk));
        EXPECT_THAT(list(), HasSubstr(" " + file + "\n"));
        restore(disk);
        EXPECT_EQ(readFile(file), "content");
    });
}

TEST_F(TrashReaders, anItemInAPreparedTrashOfADiskIsListedAndRestored) {
    runWithOwnMounts([&] {
        const std::string disk = work_ + "/disk";
        mountFileSystem(disk, 1024);
        std::filesystem::create_directory(disk + "/.Trash");
        std::filesystem::permissions(disk + "/.Trash", std::filesystem::perms(01777));
        const std::string file = folder_.write("work/disk/a.jpg", "content");
        Result<TrashedItem> item = trash(file);
        ASSERT_TRUE(item && item->path.starts_with(disk + "/.Trash/"));
        EXPECT_THAT(list(), HasSubstr(" " + file + "\n"));
        restore(disk);
        EXPECT_EQ(readFile(file), "content");
    });
}

TEST_F(TrashReaders, aCopyInTheHomeTrashIsRestoredToItsDisk) {
    runWithOwnMounts([&] {
        const std::string disk = work_ + "/disk";
        mountFileSystem(disk, 1024);
        folder_.write("work/disk/.Trash-" + std::to_string(::geteuid()), "in the way");
        const std::string file = folder_.write("work/disk/a.jpg", "content");
        Result<TrashedItem> item = trash(file);
        ASSERT_TRUE(item && item->path.starts_with(trash_));
        EXPECT_THAT(list(), HasSubstr(" " + file + "\n"));
        restore(disk);
        EXPECT_EQ(readFile(file), "content");
    });
}

} // namespace
} // namespace kestrine
