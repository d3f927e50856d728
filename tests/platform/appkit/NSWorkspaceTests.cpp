#include "platform/appkit/NSWorkspace.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace kestrine {
namespace {

using testing::readFile;
using testing::TemporaryFolder;

class Workspace : public ::testing::Test {
protected:
    void SetUp() override {
        for (const char* name : {"from", "to"})
            std::filesystem::create_directory(folder_.path() / name);
    }
    bool perform(const char16_t* operation, const std::vector<std::string>& names, int* tag = nullptr) const {
        std::vector<NSString> files;
        for (const std::string& name : names)
            files.push_back(NSString::fromUTF8(name));
        return NSWorkspace::shared().performFileOperation(operation, NSString::fromUTF8(folder_ / "from"),
                                                          NSString::fromUTF8(folder_ / "to"), files, tag);
    }
    bool exists(const std::string& name) const {
        return std::filesystem::exists(std::filesystem::symlink_status(folder_.path() / name));
    }

    const TemporaryFolder folder_{std::filesystem::canonical(std::filesystem::temp_directory_path())};
};

TEST_F(Workspace, theOperationsHaveTheirPublishedNames) {
    EXPECT_EQ(NSString(NSWorkspaceMoveOperation), u"move");
    EXPECT_EQ(NSString(NSWorkspaceCopyOperation), u"copy");
    EXPECT_EQ(NSString(NSWorkspaceLinkOperation), u"link");
    EXPECT_EQ(NSString(NSWorkspaceRecycleOperation), u"recycle");
}

TEST_F(Workspace, moveMovesTheFilesToTheDestination) {
    folder_.write("from/a \xFF.jpg", "a");
    folder_.write("from/album/b.jpg", "b");
    int tag = 7;
    EXPECT_TRUE(perform(NSWorkspaceMoveOperation, {"a \xFF.jpg", "album"}, &tag));
    EXPECT_EQ(tag, 0);
    EXPECT_EQ(readFile(folder_ / "to/a \xFF.jpg") + readFile(folder_ / "to/album/b.jpg"), "ab");
    EXPECT_FALSE(exists("from/a \xFF.jpg") || exists("from/album"));
}

TEST_F(Workspace, copyKeepsTheFilesAtTheSource) {
    folder_.write("from/a.jpg", "a");
    EXPECT_TRUE(perform(NSWorkspaceCopyOperation, {"a.jpg"}));
    EXPECT_EQ(readFile(folder_ / "to/a.jpg") + readFile(folder_ / "from/a.jpg"), "aa");
}

TEST_F(Workspace, linkPointsToTheSource) {
    folder_.write("from/a.jpg", "a");
    int tag = 7;
    EXPECT_TRUE(perform(NSWorkspaceLinkOperation, {"a.jpg"}, &tag));
    EXPECT_EQ(tag, 0);
    EXPECT_EQ(std::filesystem::read_symlink(folder_ / "to/a.jpg"), folder_ / "from/a.jpg");
}

TEST_F(Workspace, nothingIsReplaced) {
    for (const char16_t* operation :
         {NSWorkspaceMoveOperation, NSWorkspaceCopyOperation, NSWorkspaceLinkOperation}) {
        folder_.write("from/a.jpg", "new");
        folder_.write("to/a.jpg", "old");
        int tag = 0;
        EXPECT_FALSE(perform(operation, {"a.jpg"}, &tag));
        EXPECT_LT(tag, 0);
        EXPECT_EQ(readFile(folder_ / "from/a.jpg") + readFile(folder_ / "to/a.jpg"), "newold");
    }
}

TEST_F(Workspace, aFailureIsReportedByTheTag) {
    folder_.write("from/a.jpg", "a");
    int tag = 0;
    EXPECT_FALSE(perform(NSWorkspaceMoveOperation, {"missing.jpg"}, &tag));
    EXPECT_LT(tag, 0);
    tag = 0;
    EXPECT_FALSE(perform(u"destroy", {"a.jpg"}, &tag));
    EXPECT_LT(tag, 0);
    tag = 0;
    EXPECT_FALSE(perform(NSWorkspaceRecycleOperation, {"missing.jpg"}, &tag));
    EXPECT_LT(tag, 0);
    EXPECT_TRUE(exists("from/a.jpg"));
}

TEST_F(Workspace, anEmptyNameDoesNotMeanTheSource) {
    for (const char16_t* operation : {NSWorkspaceRecycleOperation, NSWorkspaceMoveOperation,
                                      NSWorkspaceCopyOperation, NSWorkspaceLinkOperation}) {
        for (const char* name : {"", "/", "//", ".", ".."})
            EXPECT_FALSE(perform(operation, {name})) << NSString(operation).utf8() << name;
        EXPECT_TRUE(exists("from"));
        EXPECT_FALSE(exists("to/from"));
    }
}

TEST_F(Workspace, packagesAreDistinguishedFromFolders) {
    std::filesystem::create_directory(folder_.path() / "Preview.app");
    const NSWorkspace& workspace = NSWorkspace::shared();
    EXPECT_TRUE(workspace.isFilePackageAtPath(NSString::fromUTF8(folder_ / "Preview.app")));
    EXPECT_FALSE(workspace.isFilePackageAtPath(NSString::fromUTF8(folder_ / "from")));
    EXPECT_FALSE(workspace.isFilePackageAtPath(u""));
}

} // namespace
} // namespace kestrine
