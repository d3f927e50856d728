// What survives a power cut: content is on the disk before a name shows it, and names are on the disk before
// success is reported or an original is removed.
#include "platform/host/files/Folders.h"
#include "platform/host/files/PublishMechanisms.h"
#include "platform/host/files/TreeCopy.h"
#include "tests/platform/host/trash/TrashTesting.h"
#include "tests/support/InterposedCalls.h"
#include "tests/support/IsolatedProcess.h"

#include <gmock/gmock.h>
#include <unistd.h>

namespace kestrine {
namespace {

using testing::bytesOf;
using ::testing::ElementsAre;
using testing::InterposedCalls;
using testing::runWithOwnMounts;
using testing::TemporaryFolder;

class PublishedFile : public ::testing::TestWithParam<PublishMechanisms> {
protected:
    std::vector<std::string> callsFor(Durability durability) const {
        const InterposedCalls calls;
        const auto candidate = [&](unsigned) { return folder_ / "a.jpg"; };
        EXPECT_TRUE(publishNewFile(candidate, bytesOf("new"), durability, GetParam()));
        return calls.made();
    }

    const TemporaryFolder folder_{std::filesystem::canonical(std::filesystem::temp_directory_path())};
};

TEST_P(PublishedFile, isSyncedBeforeItHasANameAndItsFolderIsSyncedAfterwards) {
    EXPECT_THAT(callsFor(Durability::synced),
                ElementsAre("sync 3 bytes", "name a.jpg", "sync " + folder_.path().string()));
}

TEST_P(PublishedFile, isNotSyncedIfItMayStayInTheCache) {
    EXPECT_THAT(callsFor(Durability::cached), ElementsAre("name a.jpg"));
}

INSTANTIATE_TEST_SUITE_P(Mechanisms, PublishedFile,
                         ::testing::Values(PublishMechanisms{}, PublishMechanisms{false, {}},
                                           PublishMechanisms{false, {false, true}},
                                           PublishMechanisms{false, {false, false}}));

TEST(ReplacedFile, isSyncedBeforeItIsRenamedAndItsFolderIsSyncedAfterwards) {
    const TemporaryFolder folder(std::filesystem::canonical(std::filesystem::temp_directory_path()));
    for (const char* content : {"first", "12"}) {
        const InterposedCalls calls;
        ASSERT_TRUE(replaceFile(folder / "preferences", bytesOf(content)));
        EXPECT_THAT(calls.made(),
                    ElementsAre("sync " + std::to_string(std::string(content).size()) + " bytes",
                                "name preferences", "sync " + folder.path().string()));
    }
}

TEST(CopiedFolder, isSyncedAfterItsContent) {
    const TemporaryFolder folder(std::filesystem::canonical(std::filesystem::temp_directory_path()));
    folder.write("from/a", "content");
    const Result<FileDescriptor> opened = openFolder(folder.path());
    ASSERT_TRUE(opened);
    const InterposedCalls calls;
    ASSERT_TRUE(copyTree({opened->number(), "from"}, {opened->number(), "to"}));
    EXPECT_THAT(calls.made(), ElementsAre("sync 7 bytes", "sync 7 bytes", "sync " + (folder / "to")));
}

using TrashedFile = testing::TrashTest;

TEST_F(TrashedFile, hasASyncedRecordBeforeItMoves) {
    (void)trash(folder_.write("work/first.jpg", "so that the trash exists"));
    const std::string file = folder_.write("work/a.jpg", "content");
    const InterposedCalls calls;
    Result<TrashedItem> item = trash(file);
    ASSERT_TRUE(item);
    const std::size_t recordSize = testing::readFile(item->infoPath).size();
    EXPECT_THAT(calls.made(), ElementsAre("sync " + std::to_string(recordSize) + " bytes",
                                          "sync " + trash_ + "/info", "name a.jpg"));
}

TEST_F(TrashedFile, isRemovedOnlyAfterItsCopyAndTheTrashAreSynced) {
    runWithOwnMounts([&] {
        testing::mountFileSystem(work_ + "/disk", 1024);
        folder_.write("work/disk/.Trash-" + std::to_string(::geteuid()), "in the way");
        (void)trash(folder_.write("work/first.jpg", "so that the trash exists"));
        const std::string file = folder_.write("work/disk/a.jpg", "content");
        const InterposedCalls calls;
        Result<TrashedItem> item = trash(file);
        ASSERT_TRUE(item);
        const std::size_t recordSize = testing::readFile(item->infoPath).size();
        EXPECT_THAT(calls.made(),
                    ElementsAre("sync 7 bytes", "sync 7 bytes",
                                "sync " + std::to_string(recordSize) + " bytes", "sync " + trash_ + "/info",
                                "name a.jpg", "sync " + trash_ + "/files", "hide a.jpg"));
    });
}

TEST_F(TrashedFile, hasATrashWhoseFoldersWereSyncedWhenTheyWereMade) {
    const InterposedCalls calls;
    ASSERT_TRUE(trash(folder_.write("work/a.jpg", "content")));
    const std::vector<std::string> made = calls.made();
    const std::vector<std::string> firstCalls(made.begin(), made.begin() + 5);
    EXPECT_THAT(firstCalls,
                ElementsAre("sync " + home_, "sync " + home_ + "/.local", "sync " + home_ + "/.local/share",
                            "sync " + trash_, "sync " + trash_));
}

} // namespace
} // namespace kestrine
