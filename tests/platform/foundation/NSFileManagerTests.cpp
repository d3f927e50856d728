#include "platform/foundation/NSFileManager.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace kestrine {
namespace {

using testing::TemporaryFolder;
namespace fs = std::filesystem;

NSString text(const std::string& path) { return NSString::fromUTF8(path); }

TEST(NSFileManager, filesAndFoldersExist) {
    const TemporaryFolder folder;
    const std::string file = folder.write("file", "");
    const NSFileManager& manager = NSFileManager::defaultManager();
    EXPECT_TRUE(manager.fileExistsAtPath(text(file)));
    EXPECT_TRUE(manager.fileExistsAtPath(text(folder.path().string())));
    EXPECT_FALSE(manager.fileExistsAtPath(text(folder / "missing")));
    EXPECT_FALSE(manager.fileExistsAtPath(text(file + "/below")));
    EXPECT_FALSE(manager.fileExistsAtPath(u""));
}

TEST(NSFileManager, aLinkExistsWhenWhatItLeadsToDoes) {
    const TemporaryFolder folder;
    fs::create_symlink("target", folder / "link");
    EXPECT_FALSE(NSFileManager::defaultManager().fileExistsAtPath(text(folder / "link")));
    folder.write("target", "");
    EXPECT_TRUE(NSFileManager::defaultManager().fileExistsAtPath(text(folder / "link")));
}

TEST(NSFileManager, oneFolderLevelIsMade) {
    const TemporaryFolder folder;
    NSFileManager& manager = NSFileManager::defaultManager();
    EXPECT_TRUE(manager.createDirectoryAtPath(text(folder / "a")));
    EXPECT_TRUE(fs::is_directory(folder / "a"));
    EXPECT_FALSE(manager.createDirectoryAtPath(text(folder / "a"))) << "it is there already";
    EXPECT_FALSE(manager.createDirectoryAtPath(text(folder / "b/c"))) << "its parent is missing";
}

TEST(NSFileManager, aPathWithAZeroCharacterNamesNothing) {
    const TemporaryFolder folder;
    const NSString path = text(folder / "a") + NSString(std::u16string(1, u'\0')) + u"b";
    EXPECT_FALSE(NSFileManager::defaultManager().createDirectoryAtPath(path));
    fs::create_directory(folder / "a");
    EXPECT_FALSE(NSFileManager::defaultManager().fileExistsAtPath(path));
}

} // namespace
} // namespace kestrine
