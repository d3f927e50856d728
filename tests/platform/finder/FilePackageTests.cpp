#include "platform/finder/FilePackage.h"
#include "platform/finder/FinderMetadata.h"
#include "tests/platform/finder/FinderTesting.h"
#include "tests/support/SystemFeatures.h"

namespace kestrine {
namespace {

class FilePackage : public testing::FinderTest {
protected:
    bool isPackage(const std::string& name) const { return isFilePackage(makeFolder(from_ + "/" + name)); }
};

TEST_F(FilePackage, aFolderWithThePackageExtensionIsOne) {
    for (const char* name : {"Preview.app", "a.APP", "x.y.Bundle", "Letter.rtfd", "Pictures.photoslibrary",
                             "a.kext", "a.prefPane", "Install.mpkg", "\xFF.pkg", "12:30.plugin"})
        EXPECT_TRUE(isPackage(name)) << name;
}

TEST_F(FilePackage, otherFoldersAreNone) {
    for (const char* name : {"Pictures", "app", ".app", "a.apps", "a.app.old", "a.app ", "iPhoto Library",
                             "a.framework", "a.", "Pictures.jpg"})
        EXPECT_FALSE(isPackage(name)) << name;
}

TEST_F(FilePackage, aFileOrNothingIsNone) {
    EXPECT_FALSE(isFilePackage(write(from_ + "/file.app")));
    EXPECT_FALSE(isFilePackage(from_ + "/missing.app"));
    EXPECT_FALSE(isFilePackage(""));
}

TEST_F(FilePackage, aSlashAtTheEndAndALinkMakeNoDifference) {
    const std::string package = makeFolder(from_ + "/a.app");
    std::filesystem::create_directory_symlink(package, to_ + "/link.app");
    EXPECT_TRUE(isFilePackage(package + "//"));
    EXPECT_TRUE(isFilePackage(to_ + "/link.app"));
}

TEST_F(FilePackage, theFinderInformationMakesAFolderAPackage) {
    if (!testing::keepsAttributes())
        GTEST_SKIP() << "the temporary folder's file system keeps no extended attributes";
    const std::string folder = makeFolder(from_ + "/iPhoto Library");
    FinderInfo information;
    information.flags = 0x2000;
    ASSERT_TRUE(setFinderInformation(folder, information));
    EXPECT_TRUE(isFilePackage(folder));
    information.flags = 0xDFFF;
    ASSERT_TRUE(setFinderInformation(folder, information));
    EXPECT_FALSE(isFilePackage(folder));
}

} // namespace
} // namespace kestrine
