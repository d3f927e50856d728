#include "platform/foundation/NSFileManager.h"
#include "tests/support/CurrentFolder.h"
#include "tests/support/TemporaryFolder.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

namespace kestrine {
namespace {

using testing::CurrentFolder;
using testing::TemporaryFolder;
using ::testing::UnorderedElementsAre;
namespace fs = std::filesystem;

NSString text(const std::string& path) { return NSString::fromUTF8(path); }

NSFileManager& manager() { return NSFileManager::defaultManager(); }

void setModificationDate(const std::string& path, timespec date) {
    const timespec times[2] = {{0, UTIME_OMIT}, date};
    ASSERT_EQ(::utimensat(AT_FDCWD, path.c_str(), times, AT_SYMLINK_NOFOLLOW), 0);
}

TEST(NSFileManager, filesAndFoldersExist) {
    const TemporaryFolder folder;
    const std::string file = folder.write("file", "");
    EXPECT_TRUE(manager().fileExistsAtPath(text(file)));
    EXPECT_TRUE(manager().fileExistsAtPath(text(folder.path().string())));
    EXPECT_FALSE(manager().fileExistsAtPath(text(folder / "missing")));
    EXPECT_FALSE(manager().fileExistsAtPath(text(file + "/below")));
    EXPECT_FALSE(manager().fileExistsAtPath(u""));
}

TEST(NSFileManager, aLinkExistsIfItsTargetExists) {
    const TemporaryFolder folder;
    fs::create_symlink("target", folder / "link");
    EXPECT_FALSE(manager().fileExistsAtPath(text(folder / "link")));
    folder.write("target", "");
    EXPECT_TRUE(manager().fileExistsAtPath(text(folder / "link")));
}

TEST(NSFileManager, foldersAreDistinguishedFromFiles) {
    const TemporaryFolder folder;
    folder.write("folder/file", "");
    fs::create_directory_symlink("folder", folder / "link");
    bool isDirectory = false;
    EXPECT_TRUE(manager().fileExistsAtPath(text(folder / "folder"), isDirectory));
    EXPECT_TRUE(isDirectory);
    EXPECT_TRUE(manager().fileExistsAtPath(text(folder / "folder/file"), isDirectory));
    EXPECT_FALSE(isDirectory);
    EXPECT_TRUE(manager().fileExistsAtPath(text(folder / "link"), isDirectory));
    EXPECT_TRUE(isDirectory) << "links are followed";
}

TEST(NSFileManager, aMissingItemIsNotAFolder) {
    const TemporaryFolder folder;
    bool isDirectory = true;
    EXPECT_FALSE(manager().fileExistsAtPath(text(folder / "missing"), isDirectory));
    EXPECT_FALSE(isDirectory);
}

TEST(NSFileManager, attributesContainTypeSizeAndDate) {
    const TemporaryFolder folder;
    const std::string file = folder.write("file", "12345");
    setModificationDate(file, {1'200'000'000, 123'456'789});
    const std::optional<NSFileAttributes> attributes = manager().fileAttributesAtPath(text(file), false);
    ASSERT_TRUE(attributes);
    EXPECT_TRUE(attributes->fileType.isSame(NSFileTypeRegular()));
    EXPECT_EQ(attributes->fileSize, 5u);
    EXPECT_EQ(attributes->fileModificationDate, (NSDate{1'200'000'000, 123'456'789}));
    EXPECT_FALSE(manager().fileAttributesAtPath(text(folder / "missing"), false));
}

TEST(NSFileManager, attributesBelongToTheLinkOrToItsTarget) {
    const TemporaryFolder folder;
    fs::create_directory(folder / "real");
    fs::create_directory_symlink("real", folder / "link");
    const NSString link = text(folder / "link");
    EXPECT_TRUE(manager().fileAttributesAtPath(link, false)->fileType.isSame(NSFileTypeSymbolicLink()));
    EXPECT_EQ(manager().fileAttributesAtPath(link, false)->fileSize, 4u) << "the length of its target";
    EXPECT_TRUE(manager().fileAttributesAtPath(link, true)->fileType.isSame(NSFileTypeDirectory()));
    fs::remove(folder / "real");
    EXPECT_FALSE(manager().fileAttributesAtPath(link, true));
}

TEST(NSFileManager, otherKindsOfItemsHaveTheirTypes) {
    const TemporaryFolder folder;
    ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
    EXPECT_TRUE(
        manager().fileAttributesAtPath(text(folder / "pipe"), false)->fileType.isSame(NSFileTypeUnknown()));
    EXPECT_TRUE(
        manager().fileAttributesAtPath(u"/dev/null", false)->fileType.isSame(NSFileTypeCharacterSpecial()));
}

TEST(NSFileManager, subpathsAreRelativeAndDoNotFollowLinks) {
    const TemporaryFolder folder;
    folder.write("a/b", "");
    fs::create_directory_symlink(folder.path(), folder / "a/loop");
    EXPECT_THAT(manager().subpathsAtPath(text(folder.path())),
                UnorderedElementsAre(NSString(u"a"), NSString(u"a/b"), NSString(u"a/loop")));
    EXPECT_TRUE(manager().subpathsAtPath(text(folder / "a/b")).empty());
    EXPECT_TRUE(manager().subpathsAtPath(text(folder / "missing")).empty());
}

TEST(NSFileManager, theCurrentFolderOfTheProcessIsChanged) {
    const TemporaryFolder folder;
    const CurrentFolder before(fs::temp_directory_path());
    folder.write("inside", "");
    EXPECT_TRUE(manager().changeCurrentDirectoryPath(text(folder.path())));
    EXPECT_TRUE(manager().fileExistsAtPath(u"inside"));
    EXPECT_FALSE(manager().changeCurrentDirectoryPath(u"missing"));
    EXPECT_TRUE(manager().fileExistsAtPath(u"inside"));
}

TEST(NSFileManager, aFolderIsCreatedWithTheAttributesOfAnother) {
    const TemporaryFolder folder;
    fs::create_directory(folder / "model");
    fs::permissions(folder / "model", fs::perms(01750));
    setModificationDate(folder / "model", {1'200'000'000, 5});
    const std::optional<NSFileAttributes> model =
        manager().fileAttributesAtPath(text(folder / "model"), false);
    ASSERT_TRUE(manager().createDirectoryAtPath(text(folder / "made"), model));
    const std::optional<NSFileAttributes> made = manager().fileAttributesAtPath(text(folder / "made"), false);
    EXPECT_EQ(made->filePosixPermissions, 01750u);
    EXPECT_EQ(made->fileModificationDate, model->fileModificationDate);
    EXPECT_FALSE(manager().createDirectoryAtPath(text(folder / "made"), model)) << "it exists already";
}

TEST(NSFileManager, theAttributesOfALinkAreIgnoredForAFolder) {
    const TemporaryFolder folder;
    fs::create_symlink("target", folder / "link");
    ASSERT_TRUE(manager().createDirectoryAtPath(
        text(folder / "made"), manager().fileAttributesAtPath(text(folder / "link"), false)));
    ASSERT_TRUE(manager().createDirectoryAtPath(text(folder / "plain")));
    EXPECT_EQ(manager().fileAttributesAtPath(text(folder / "made"), false)->filePosixPermissions,
              manager().fileAttributesAtPath(text(folder / "plain"), false)->filePosixPermissions);
}

TEST(NSFileManager, datesAreComparedInNanoseconds) {
    EXPECT_EQ((NSDate{5, 0}.compare({5, 1})), -1);
    EXPECT_EQ((NSDate{5, 1}.compare({5, 0})), 1);
    EXPECT_EQ((NSDate{4, 999'999'999}.compare({5, 0})), -1);
    EXPECT_EQ((NSDate{-1, 5}.compare({-1, 5})), 0);
}

TEST(NSFileManager, onlyOneFolderLevelIsCreated) {
    const TemporaryFolder folder;
    EXPECT_TRUE(manager().createDirectoryAtPath(text(folder / "a")));
    EXPECT_TRUE(fs::is_directory(folder / "a"));
    EXPECT_FALSE(manager().createDirectoryAtPath(text(folder / "a"))) << "it exists already";
    EXPECT_FALSE(manager().createDirectoryAtPath(text(folder / "b/c"))) << "its parent is missing";
}

TEST(NSFileManager, aPathWithAZeroCharacterDoesNotExist) {
    const TemporaryFolder folder;
    const NSString path = text(folder / "a") + NSString(std::u16string(1, u'\0')) + u"b";
    EXPECT_FALSE(manager().createDirectoryAtPath(path));
    fs::create_directory(folder / "a");
    EXPECT_FALSE(manager().fileExistsAtPath(path));
}

} // namespace
} // namespace kestrine
