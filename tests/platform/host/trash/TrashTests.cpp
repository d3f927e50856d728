// The home trash for items on the same file system, and items that are refused everywhere.
#include "platform/host/files/FileStatus.h"
#include "platform/host/files/Folders.h"
#include "tests/platform/host/trash/TrashTesting.h"
#include "tests/support/IsolatedProcess.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace kestrine {
namespace {

using testing::isEmptyTrash;
using testing::mountFileSystem;
using testing::namesInFolder;
using testing::readFile;
using testing::recordedPath;
using testing::runAsOrdinaryUser;
using testing::runIsolated;
using testing::runWithOwnMounts;
using ::testing::UnorderedElementsAre;
using Trash = testing::TrashTest;

mode_t rightsOf(const std::string& path) {
    struct stat status {};
    EXPECT_EQ(::lstat(path.c_str(), &status), 0) << path;
    return status.st_mode & 07777;
}

TEST_F(Trash, aFileOnTheSameDeviceGoesToTheHomeTrash) {
    const std::string file = folder_.write("work/a.jpg", "content");
    Result<TrashedItem> item = trash(file);
    ASSERT_TRUE(item);
    EXPECT_EQ(item->path, trash_ + "/files/a.jpg");
    EXPECT_EQ(item->infoPath, trash_ + "/info/a.jpg.trashinfo");
    EXPECT_EQ(readFile(item->path), "content");
    EXPECT_EQ(recordedPath(*item), file);
    EXPECT_FALSE(isTaken(file));
}

TEST_F(Trash, theFoldersOfTheTrashAreForTheUserOnly) {
    Result<TrashedItem> item = trash(folder_.write("work/a.jpg", "content"));
    ASSERT_TRUE(item);
    for (const std::string& made : {home_ + "/.local", home_ + "/.local/share", trash_, trash_ + "/files"})
        EXPECT_EQ(rightsOf(made), 0700u) << made;
    EXPECT_EQ(rightsOf(item->infoPath), 0600u);
}

TEST_F(Trash, theTrashIsInTheDataFolderOfTheEnvironment) {
    const std::string file = folder_.write("work/a.jpg", "content");
    const Environment environment{{"HOME", home_}, {"XDG_DATA_HOME", folder_ / "data"}};
    EXPECT_EQ(moveToTrash(file, environment)->path, folder_ / "data/Trash/files/a.jpg");
}

TEST_F(Trash, itemsWithTheSameNameAreNumbered) {
    for (const char* expected : {"a.jpg", "a.2.jpg", "a.3.jpg"}) {
        Result<TrashedItem> item = trash(folder_.write("work/a.jpg", expected));
        ASSERT_TRUE(item);
        EXPECT_EQ(item->path, trash_ + "/files/" + expected);
        EXPECT_EQ(readFile(item->path), expected);
        EXPECT_EQ(recordedPath(*item), work_ + "/a.jpg");
    }
}

TEST_F(Trash, incompleteItemsOfOtherProgramsAreNotReplaced) {
    folder_.write("home/.local/share/Trash/info/a.jpg.trashinfo", "record without an item");
    folder_.write("home/.local/share/Trash/files/a.2.jpg", "item without a record");
    EXPECT_EQ(trash(folder_.write("work/a.jpg", "content"))->path, trash_ + "/files/a.3.jpg");
    EXPECT_EQ(readFile(trash_ + "/info/a.jpg.trashinfo"), "record without an item");
    EXPECT_EQ(readFile(trash_ + "/files/a.2.jpg"), "item without a record");
    EXPECT_THAT(namesInFolder(trash_ + "/info"),
                UnorderedElementsAre("a.jpg.trashinfo", "a.3.jpg.trashinfo"));
}

TEST_F(Trash, namesMayHaveAnyBytes) {
    for (const char* name :
         {"n\nl", "100% fun %n.jpg", "\xFF\xFE.jpg", "caf\xC3\xA9", "a+b", "[x]=;#", "-r", " "}) {
        const std::string file = work_ + "/" + name;
        Result<TrashedItem> item = trash(folder_.write("work/" + std::string(name), name));
        ASSERT_TRUE(item) << name;
        EXPECT_EQ(item->path, trash_ + "/files/" + name);
        EXPECT_EQ(recordedPath(*item), file);
        EXPECT_FALSE(isTaken(file)) << name;
    }
}

TEST_F(Trash, aNameOf255BytesIsShortenedInTheTrashButNotInTheRecord) {
    const std::string name = std::string(251, 'n') + ".jpg";
    for (const char* end : {"nnn.jpg", "n.2.jpg"}) {
        Result<TrashedItem> item = trash(folder_.write("work/" + name, "content"));
        ASSERT_TRUE(item);
        EXPECT_TRUE(item->path.ends_with(end)) << item->path;
        EXPECT_EQ(recordedPath(*item), work_ + "/" + name);
    }
}

TEST_F(Trash, linksAreMovedInsteadOfTheirTargets) {
    folder_.write("work/real", "content");
    std::filesystem::create_symlink("real", work_ + "/link");
    std::filesystem::create_symlink("nowhere", work_ + "/dangling");
    std::filesystem::create_directory_symlink(home_, work_ + "/toHome");
    for (const char* name : {"link", "dangling", "toHome"}) {
        Result<TrashedItem> item = trash(work_ + "/" + name);
        ASSERT_TRUE(item) << name;
        EXPECT_TRUE(std::filesystem::is_symlink(item->path)) << name;
    }
    EXPECT_EQ(readFile(work_ + "/real"), "content");
}

TEST_F(Trash, aFolderIsMovedWithItsContent) {
    folder_.write("work/album/sub/a.jpg", "content");
    Result<TrashedItem> item = trash(work_ + "/album/");
    ASSERT_TRUE(item);
    EXPECT_EQ(readFile(item->path + "/sub/a.jpg"), "content");
    EXPECT_EQ(recordedPath(*item), work_ + "/album");
    EXPECT_FALSE(isTaken(work_ + "/album"));
}

TEST_F(Trash, theDiskSpaceOfAFolderIsRecorded) {
    folder_.write("work/my album/a.jpg", std::string(100'000, 'x'));
    folder_.write("home/.local/share/Trash/directorysizes",
                  "4096 1 other\n4096 1 my%20album\n4096 1 not-my%20album\n");
    Result<TrashedItem> item = trash(work_ + "/my album");
    ASSERT_TRUE(item);
    std::uint64_t room = 0;
    for (const char* part : {"", "/a.jpg"}) {
        struct stat status {};
        ASSERT_EQ(::stat((item->path + part).c_str(), &status), 0);
        room += static_cast<std::uint64_t>(status.st_blocks) * 512;
    }
    struct stat record {};
    ASSERT_EQ(::stat(item->infoPath.c_str(), &record), 0);
    EXPECT_EQ(readFile(trash_ + "/directorysizes"), "4096 1 other\n4096 1 not-my%20album\n"
                                                        + std::to_string(room) + " "
                                                        + std::to_string(record.st_mtime) + " my%20album\n");
}

TEST_F(Trash, theDiskSpaceIncludesAllLevelsAndEachFileOnce) {
    folder_.write("work/album/a/b/c.jpg", std::string(100'000, 'x'));
    folder_.write("work/album/a/b/d.jpg", std::string(50'000, 'x'));
    std::filesystem::create_hard_link(work_ + "/album/a/b/c.jpg", work_ + "/album/again.jpg");
    const Result<TrashedItem> item = trash(work_ + "/album");
    ASSERT_TRUE(item);
    std::uint64_t space = 0;
    for (const char* part : {"", "/a", "/a/b", "/a/b/c.jpg", "/a/b/d.jpg"}) {
        struct stat status {};
        ASSERT_EQ(::stat((item->path + part).c_str(), &status), 0);
        space += static_cast<std::uint64_t>(status.st_blocks) * 512;
    }
    EXPECT_TRUE(readFile(trash_ + "/directorysizes").starts_with(std::to_string(space) + " "));
}

TEST_F(Trash, aListOfSizesThatIsTooLongIsStartedAnew) {
    const std::string list = folder_.write("home/.local/share/Trash/directorysizes", "4096 1 other\n");
    folder_.write("work/album/a.jpg", "content");
    folder_.write("work/second/a.jpg", "content");
    std::filesystem::resize_file(list, 16 * 1024 * 1024);
    ASSERT_TRUE(trash(work_ + "/album"));
    EXPECT_GT(std::filesystem::file_size(list), 16U * 1024 * 1024);
    std::filesystem::resize_file(list, 16 * 1024 * 1024 + 1);
    ASSERT_TRUE(trash(work_ + "/second"));
    EXPECT_LT(std::filesystem::file_size(list), 100U);
}

TEST_F(Trash, theDiskSpaceOfAFileIsNotRecorded) {
    ASSERT_TRUE(trash(folder_.write("work/a.jpg", "content")));
    EXPECT_FALSE(isTaken(trash_ + "/directorysizes"));
}

TEST_F(Trash, theRecordHasTheRealPath) {
    const std::string file = folder_.write("work/sub/a.jpg", "content");
    std::filesystem::create_directory_symlink("sub", work_ + "/link");
    runIsolated([&] {
        std::filesystem::current_path(work_ + "/sub");
        Result<TrashedItem> item = trash("../link/../sub/a.jpg");
        ASSERT_TRUE(item);
        EXPECT_EQ(recordedPath(*item), file);
    });
}

TEST_F(Trash, specialFilesCanBeMoved) {
    ASSERT_EQ(::mkfifo((work_ + "/pipe").c_str(), 0600), 0);
    EXPECT_TRUE(trash(work_ + "/pipe"));
}

TEST_F(Trash, emptyAndDotNamesAreRefused) {
    folder_.write("work/album/a.jpg", "content");
    const std::string album = work_ + "/album";
    for (const std::string& path :
         {std::string(), std::string("."), std::string(".."), std::string("/"), std::string("//"),
          album + "/.", album + "/..", album + "/../", "a" + std::string(1, '\0')})
        EXPECT_EQ(trash(path).failure().reason, Reason::refused) << path;
    EXPECT_EQ(readFile(album + "/a.jpg"), "content");
    EXPECT_FALSE(isTaken(home_ + "/.local")) << "no trash is created";
}

TEST_F(Trash, theHomeFolderAndFoldersThatContainItAreRefused) {
    const std::string users = makeFolderOpenToAll("users");
    const std::string me = makeFolderOpenToAll("users/me");
    const Environment elsewhere{{"HOME", me}, {"XDG_DATA_HOME", folder_ / "data"}};
    for (const std::string& path : {me, me + "/", users})
        EXPECT_EQ(moveToTrash(path, elsewhere).failure().reason, Reason::refused) << path;
}

TEST_F(Trash, theCurrentFolderAndFoldersThatContainItAreRefused) {
    folder_.write("work/album/day/a.jpg", "content");
    runIsolated([&] {
        ASSERT_EQ(::chdir((work_ + "/album/day").c_str()), 0);
        for (const std::string& path : {work_ + "/album/day", work_ + "/album", std::string("../day")})
            EXPECT_EQ(trash(path).failure().reason, Reason::refused) << path;
    });
    EXPECT_TRUE(trash(work_ + "/album"));
}

TEST_F(Trash, theTrashItsContentAndFoldersThatContainItAreRefused) {
    Result<TrashedItem> item = trash(folder_.write("work/a.jpg", "content"));
    ASSERT_TRUE(item);
    for (const std::string& path :
         {item->path, item->infoPath, trash_, trash_ + "/files", home_ + "/.local/share", home_ + "/.local"})
        EXPECT_EQ(trash(path).failure().reason, Reason::refused) << path;
    EXPECT_EQ(readFile(item->path), "content");
}

TEST_F(Trash, foldersForTheTrashAreRefusedBeforeTheTrashExists) {
    ASSERT_TRUE(makeFolder(home_ + "/.local"));
    EXPECT_EQ(trash(home_ + "/.local").failure().reason, Reason::refused);
    EXPECT_THAT(namesInFolder(home_ + "/.local"), ::testing::IsEmpty());
}

TEST_F(Trash, aLinkedTrashIsRecognisedByItsRealPath) {
    const std::string real = makeFolderOpenToAll("real");
    ASSERT_TRUE(makePrivateFolders(home_ + "/.local/share"));
    std::filesystem::create_directory_symlink(real, trash_);
    Result<TrashedItem> item = trash(folder_.write("work/a.jpg", "content"));
    ASSERT_TRUE(item);
    EXPECT_EQ(trash(real + "/files/a.jpg").failure().reason, Reason::refused);
    EXPECT_EQ(trash(real).failure().reason, Reason::refused);
}

TEST_F(Trash, mountPointsAreRefused) {
    for (const char* path : {"/proc", "/proc/"})
        EXPECT_EQ(trash(path).failure().reason, Reason::refused) << path;
    runWithOwnMounts([&] {
        mountFileSystem(work_ + "/disk", 64);
        EXPECT_EQ(trash(work_ + "/disk").failure().reason, Reason::refused);
        EXPECT_EQ(trash(work_).failure().reason, Reason::refused) << "a disk is mounted in it";
        EXPECT_TRUE(isTaken(work_ + "/disk"));
    });
}

TEST_F(Trash, aMissingFileIsNotFound) {
    EXPECT_EQ(trash(work_ + "/none").failure().reason, Reason::notFound);
    EXPECT_EQ(trash(work_ + "/none/a").failure().reason, Reason::notFound);
    EXPECT_EQ(trash(work_ + "/" + std::string(300, 'n')).failure().reason, Reason::tooLarge);
}

TEST_F(Trash, withoutPermissionInTheFolderTheFileStays) {
    const std::string file = folder_.write("work/locked/a.jpg", "content");
    ::chmod((work_ + "/locked").c_str(), 0555);
    runAsOrdinaryUser([&] { EXPECT_EQ(trash(file).failure().reason, Reason::notPermitted); });
    ::chmod((work_ + "/locked").c_str(), 0700);
    EXPECT_EQ(readFile(file), "content");
    EXPECT_TRUE(isEmptyTrash(trash_));
}

TEST_F(Trash, filesOfOthersInASharedFolderStay) {
    if (::geteuid() != 0)
        GTEST_SKIP() << "only root can prepare files of another user";
    const std::string file = folder_.write("work/a.jpg", "content");
    ::chmod(work_.c_str(), 01777);
    runAsOrdinaryUser([&] { EXPECT_EQ(trash(file).failure().reason, Reason::notPermitted); });
    EXPECT_EQ(readFile(file), "content");
    EXPECT_TRUE(isEmptyTrash(trash_));
}

TEST_F(Trash, aWriteProtectedFileCanBeMoved) {
    const std::string file = folder_.write("work/a.jpg", "content");
    ::chmod(file.c_str(), 0444);
    runAsOrdinaryUser([&] { EXPECT_TRUE(trash(file)); });
    EXPECT_EQ(readFile(trash_ + "/files/a.jpg"), "content");
    EXPECT_EQ(rightsOf(trash_ + "/files/a.jpg"), 0444u);
}

TEST_F(Trash, ifNoTrashCanBeCreatedTheFileStays) {
    folder_.write("home/.local", "a file in the way");
    runWithOwnMounts([&] {
        mountFileSystem(folder_ / "disk", 64);
        folder_.write("disk/.Trash-" + std::to_string(::geteuid()), "another one");
        const std::string file = folder_.write("disk/a.jpg", "content");
        EXPECT_FALSE(trash(file));
        EXPECT_EQ(readFile(file), "content");
    });
}

TEST_F(Trash, withoutSpaceForTheRecordTheFileStays) {
    runWithOwnMounts([&] {
        mountFileSystem(home_ + "/disk", 64);
        const std::string trash = home_ + "/disk/Trash";
        const Environment environment{{"HOME", home_}, {"XDG_DATA_HOME", home_ + "/disk"}};
        ASSERT_TRUE(makePrivateFolders(trash + "/files") && makePrivateFolders(trash + "/info"));
        const std::string file = folder_.write("home/disk/a.jpg", std::string(65'536, 'x'));
        EXPECT_EQ(moveToTrash(file, environment).failure().reason, Reason::noSpace);
        EXPECT_TRUE(isTaken(file));
        EXPECT_TRUE(isEmptyTrash(trash));
    });
}

TEST_F(Trash, concurrentMovesAllSucceed) {
    constexpr unsigned threads = 6, itemsEach = 15;
    const auto moveAll = [&](unsigned thread) {
        for (unsigned i = 0; i < itemsEach; ++i) {
            const std::string content = std::to_string(thread) + "/" + std::to_string(i);
            Result<TrashedItem> item =
                trash(folder_.write("work/" + std::to_string(thread) + "/a.jpg", content));
            ASSERT_TRUE(item);
            EXPECT_EQ(readFile(item->path), content);
            EXPECT_EQ(recordedPath(*item), work_ + "/" + std::to_string(thread) + "/a.jpg");
        }
    };
    std::vector<std::thread> running;
    for (unsigned thread = 0; thread < threads; ++thread)
        running.emplace_back(moveAll, thread);
    for (std::thread& thread : running)
        thread.join();
    EXPECT_EQ(namesInFolder(trash_ + "/files").size(), threads * itemsEach);
    EXPECT_EQ(namesInFolder(trash_ + "/info").size(), threads * itemsEach);
}

} // namespace
} // namespace kestrine
