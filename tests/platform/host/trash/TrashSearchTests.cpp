#include "platform/host/trash/TrashSearch.h"

#include "tests/platform/host/trash/TrashTesting.h"
#include "tests/support/IsolatedProcess.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

namespace kestrine {
namespace {

using testing::isEmptyTrash;
using testing::mountFileSystem;
using testing::readFile;
using testing::runWithOwnMounts;
using TrashSearching = testing::TrashTest;

std::int64_t modifiedOf(const std::string& path) {
    struct stat status {};
    EXPECT_EQ(::stat(path.c_str(), &status), 0) << path;
    return status.st_mtim.tv_sec * 1'000'000'000 + status.st_mtim.tv_nsec;
}

TEST_F(TrashSearching, anItemIsFoundByItsPlaceAndTakenOutAsItWas) {
    const std::string path = folder_.write("work/a %41\xFF.jpg", "picture");
    const std::int64_t modified = modifiedOf(path);
    ASSERT_TRUE(trash(path));
    const std::vector<TrashedItem> items = TrashSearch(environment_).itemsFrom(path).items;
    ASSERT_EQ(items.size(), 1);
    EXPECT_TRUE(takeOutOfTrash(items.front(), path));
    EXPECT_TRUE(removeRecords(items, {work_}));
    EXPECT_EQ(readFile(path), "picture");
    EXPECT_EQ(modifiedOf(path), modified);
    EXPECT_TRUE(isEmptyTrash(trash_));
}

TEST_F(TrashSearching, aRecordStaysWhileItsItemMayBeLost) {
    const std::string path = folder_.write("work/a.jpg", "picture");
    const TrashedItem item = *trash(path);
    ASSERT_TRUE(takeOutOfTrash(item, path));
    EXPECT_FALSE(removeRecords({item}, {work_ + "/absent"}));
    EXPECT_TRUE(std::filesystem::exists(item.infoPath));
}

TEST_F(TrashSearching, everyItemFromAPlaceIsFoundAndNoOther) {
    for (const char* content : {"first", "second"})
        ASSERT_TRUE(trash(folder_.write("work/a.jpg", content)));
    ASSERT_TRUE(trash(folder_.write("work/b.jpg", "other")));
    TrashSearch search(environment_);
    EXPECT_EQ(search.itemsFrom(work_ + "/a.jpg").items.size(), 2);
    EXPECT_EQ(search.itemsFrom(work_ + "/c.jpg").items.size(), 0);
}

TEST_F(TrashSearching, withoutATrashNothingIsFoundAndNoneIsMade) {
    const FoundItems found = TrashSearch(environment_).itemsFrom(work_ + "/a.jpg");
    EXPECT_TRUE(found.items.empty());
    EXPECT_FALSE(found.obstacle) << found.obstacle->text;
    EXPECT_FALSE(std::filesystem::exists(trash_));
}

TEST_F(TrashSearching, aTrashThatCannotBeReadIsNotTakenForAnEmptyOne) {
    const std::string path = folder_.write("work/a.jpg", "picture");
    ASSERT_TRUE(trash(path));
    const std::string records = trash_ + "/info", hidden = trash_ + "/hidden";
    std::filesystem::rename(records, hidden);
    std::filesystem::create_symlink("info", records); // a link to itself
    const FoundItems found = TrashSearch(environment_).itemsFrom(path);
    EXPECT_TRUE(found.items.empty());
    EXPECT_TRUE(found.obstacle);
    std::filesystem::remove(records);
    std::filesystem::rename(hidden, records);
    EXPECT_EQ(TrashSearch(environment_).itemsFrom(path).items.size(), 1);
}

TEST_F(TrashSearching, filesThatNoTrashCreatesAreNotObstacles) {
    const std::string path = folder_.write("work/a.jpg", "picture");
    ASSERT_TRUE(trash(path));
    std::filesystem::create_directory(trash_ + "/info/folder.trashinfo");
    std::filesystem::create_symlink("nowhere", trash_ + "/info/dangling.trashinfo");
    std::ofstream(trash_ + "/info/large.trashinfo") << std::string(100'000, 'x');
    const FoundItems found = TrashSearch(environment_).itemsFrom(path);
    EXPECT_EQ(found.items.size(), 1);
    EXPECT_FALSE(found.obstacle) << found.obstacle->text;
}

TEST_F(TrashSearching, aTakenNameIsNotReplaced) {
    const std::string path = folder_.write("work/a.jpg", "picture");
    ASSERT_TRUE(trash(path));
    folder_.write("work/a.jpg", "newer");
    const TrashedItem item = TrashSearch(environment_).itemsFrom(path).items.at(0);
    EXPECT_EQ(takeOutOfTrash(item, path).failure().reason, Reason::alreadyExists);
    EXPECT_EQ(readFile(path), "newer");
    EXPECT_EQ(readFile(item.path), "picture");
}

TEST_F(TrashSearching, itemsOfOtherFileSystemsAreFoundInTheirOwnTrashAndInTheHomeTrash) {
    runWithOwnMounts([&] {
        mountFileSystem(work_ + "/volume", 1024);
        const std::string path = folder_.write("work/volume/a.jpg", "picture");
        ASSERT_TRUE(trash(path));
        const TrashedItem own = TrashSearch(environment_).itemsFrom(path).items.at(0);
        EXPECT_TRUE(own.path.starts_with(work_ + "/volume/.Trash-")) << own.path;
        ASSERT_TRUE(takeOutOfTrash(own, path));
        EXPECT_TRUE(removeRecords({own}, {work_ + "/volume"}));

        std::filesystem::remove_all(std::filesystem::path(own.path).parent_path().parent_path());
        folder_.write("work/volume/.Trash-" + std::to_string(::geteuid()), "in the way");
        ASSERT_TRUE(trash(path));
        const TrashedItem copied = TrashSearch(environment_).itemsFrom(path).items.at(0);
        EXPECT_TRUE(copied.path.starts_with(trash_)) << copied.path;
        EXPECT_TRUE(takeOutOfTrash(copied, path));
        EXPECT_TRUE(removeRecords({copied}, {work_ + "/volume"}));
        EXPECT_EQ(readFile(path), "picture");
        EXPECT_TRUE(isEmptyTrash(trash_));
    });
}

} // namespace
} // namespace kestrine
