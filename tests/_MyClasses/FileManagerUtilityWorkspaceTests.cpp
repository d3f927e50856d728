#include "_MyClasses/Category/FileManagerUtilityMetadata.h"
#include "_MyClasses/Category/FileManagerUtilityScripting.h"
#include "platform/finder/FinderMetadata.h"
#include "tests/_MyClasses/CapturedLog.h"
#include "tests/_MyClasses/SystemVersion.h"
#include "tests/support/FinderPlace.h"
#include "tests/support/SystemFeatures.h"

#include <gtest/gtest.h>

namespace kestrine {
namespace {

using testing::readFile;
namespace fs = std::filesystem;

NSString text(const std::string& path) { return NSString::fromUTF8(path); }

/// Files of the test and a destination folder.
class WorkspaceFilesTest : public ::testing::Test {
protected:
    std::string commented(const std::string& name, const NSString& comment) const {
        const std::string path = place_.write(name);
        EXPECT_TRUE(setFinderComment(path, comment));
        return path;
    }

    const testing::FinderPlace place_;
    const std::string folder_ = place_.makeFolder("folder");
};

/// Tests with a folder that is on another volume, also by its path.
class TwoVolumesTest : public WorkspaceFilesTest {
protected:
    void SetUp() override {
        if (!fs::is_directory("/dev/shm") || place_.path().string().starts_with("/dev/"))
            GTEST_SKIP() << "there is no second file system";
        elsewhere_ = std::make_unique<testing::TemporaryFolder>("/dev/shm");
    }

    std::unique_ptr<const testing::TemporaryFolder> elsewhere_;
};

TEST_F(WorkspaceFilesTest, linksPointToTheFiles) {
    const std::string file = place_.write("a \"b\"", "content"), other = place_.write("caf\xe9");
    WSLinkFilesToFolder({text(file), text(other)}, text(folder_));
    EXPECT_TRUE(fs::is_symlink(folder_ + "/a \"b\""));
    EXPECT_TRUE(fs::equivalent(folder_ + "/a \"b\"", file));
    EXPECT_TRUE(fs::equivalent(folder_ + "/caf\xe9", other));
}

TEST_F(WorkspaceFilesTest, aFailedLinkDoesNotStopTheNext) {
    const std::string taken = place_.write("a"), file = place_.write("b");
    place_.write("folder/a", "old");
    WSLinkFilesToFolder({text(taken), text(place_ / "missing"), text(file)}, text(folder_));
    EXPECT_EQ(readFile(folder_ + "/a"), "old");
    EXPECT_TRUE(fs::is_symlink(folder_ + "/b"));
}

TEST_F(WorkspaceFilesTest, filesAreMovedOrCopied) {
    const std::string moved = place_.write("a"), copied = place_.write("b");
    WSMoveFilesToFolder({text(moved)}, text(folder_), false);
    WSMoveFilesToFolder({text(copied)}, text(folder_), true);
    EXPECT_FALSE(fs::exists(moved));
    EXPECT_TRUE(fs::exists(copied));
    EXPECT_EQ(readFile(folder_ + "/a") + readFile(folder_ + "/b"), "contentcontent");
}

TEST_F(WorkspaceFilesTest, nothingIsReplacedAndTheNextFilesAreStillMoved) {
    const std::string taken = place_.write("a", "new"), file = place_.write("b");
    place_.write("folder/a", "old");
    WSMoveFilesToFolder({text(taken), text(place_ / "missing"), text(file)}, text(folder_), false);
    EXPECT_EQ(readFile(taken), "new");
    EXPECT_EQ(readFile(folder_ + "/a"), "old");
    EXPECT_TRUE(fs::exists(folder_ + "/b"));
}

TEST_F(WorkspaceFilesTest, anEmptyListDoesNothing) {
    WSLinkFilesToFolder({}, text(folder_));
    WSMoveFilesToFolder({}, text(folder_), false);
    EXPECT_TRUE(fs::is_empty(folder_));
}

TEST_F(WorkspaceFilesTest, movedAndCopiedItemsKeepTheirComments) {
    if (!testing::keepsAttributes())
        GTEST_SKIP() << "the temporary folder's file system keeps no extended attributes";
    const std::string moved = commented("a", u"first"), copied = commented("b", u"zweiter Kommentar");
    WSMoveFilesToFolder({text(moved)}, text(folder_), false);
    WSMoveFilesToFolder({text(copied), text(place_.write("c"))}, text(folder_), true);
    EXPECT_EQ(commentForFile(text(folder_ + "/a")), NSString(u"first"));
    EXPECT_EQ(commentForFile(text(folder_ + "/b")), NSString(u"zweiter Kommentar"));
    EXPECT_EQ(commentForFile(text(folder_ + "/c")), std::nullopt);
}

TEST_F(WorkspaceFilesTest, aCommentIsWrittenEvenWhenTheItemIsNotMoved) {
    if (!testing::keepsAttributes())
        GTEST_SKIP() << "the temporary folder's file system keeps no extended attributes";
    const std::string taken = commented("a", u"new"), older = commented("folder/a", u"old");
    WSMoveFilesToFolder({text(taken)}, text(folder_), false);
    EXPECT_TRUE(fs::exists(taken));
    EXPECT_EQ(commentForFile(text(older)), NSString(u"new"));
    setCommentForFile(NSString(u""), text(taken));
    WSMoveFilesToFolder({text(taken)}, text(folder_), false);
    EXPECT_EQ(commentForFile(text(older)), NSString(u"new")) << "from 10.5 on no comment is nil";
    const testing::CapturedLog silent;
    const testing::SystemVersion tiger(0x1049);
    WSMoveFilesToFolder({text(taken)}, text(folder_), false);
    EXPECT_EQ(commentForFile(text(older)), NSString());
}

TEST_F(TwoVolumesTest, theFirstFileOnAnotherVolumeAndAllLaterOnesAreCopied) {
    const std::string first = elsewhere_->write("a", "1");
    const std::string second = place_.write("b", "2"), third = place_.write("c", "3");
    WSMoveFilesToFolder({text(first), text(second), text(third)}, text(folder_), false);
    EXPECT_EQ(readFile(folder_ + "/a") + readFile(folder_ + "/b") + readFile(folder_ + "/c"), "123");
    EXPECT_EQ(readFile(first) + readFile(second) + readFile(third), "123") << "all three were copied";
}

TEST_F(TwoVolumesTest, filesBeforeTheOneOnAnotherVolumeAreMoved) {
    const std::string first = place_.write("a", "1"), second = elsewhere_->write("b", "2"),
                      third = place_.write("c", "3");
    WSMoveFilesToFolder({text(first), text(second), text(third)}, text(folder_), false);
    EXPECT_FALSE(fs::exists(first));
    EXPECT_TRUE(fs::exists(second) && fs::exists(third));
    EXPECT_EQ(readFile(folder_ + "/a") + readFile(folder_ + "/b") + readFile(folder_ + "/c"), "123");
}

TEST_F(TwoVolumesTest, everyCallStartsWithMoving) {
    const std::string other = elsewhere_->write("a", "1"), own = place_.write("b", "2");
    WSMoveFilesToFolder({text(other)}, text(folder_), false);
    WSMoveFilesToFolder({text(own)}, text(folder_), false);
    EXPECT_FALSE(fs::exists(own));
}

} // namespace
} // namespace kestrine
