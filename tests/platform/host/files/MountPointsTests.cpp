#include "platform/host/files/Folders.h"
#include "platform/host/files/MountPoints.h"
#include "tests/support/IsolatedProcess.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <sys/mount.h>

namespace kestrine {
namespace {

using testing::mountAgain;
using testing::mountFileSystem;
using testing::runWithOwnMounts;
using testing::TemporaryFolder;

TEST(MountPoints, theTopFolderOfAMountIsFoundFromAnyDepth) {
    const TemporaryFolder folder;
    runWithOwnMounts([&] {
        const std::string disk = std::filesystem::canonical(folder.path()).string() + "/di sk\n";
        mountFileSystem(disk, 64);
        ASSERT_TRUE(makePrivateFolders(disk + "/a/b"));
        EXPECT_EQ(*topFolderOf(disk), disk);
        EXPECT_EQ(*topFolderOf(disk + "/a/b"), disk);
        EXPECT_NE(*topFolderOf(std::filesystem::canonical(folder.path()).string()), disk);
        EXPECT_TRUE(hasMountPointBelow(folder.path().string()));
        EXPECT_FALSE(hasMountPointBelow(disk)) << "the mount itself is not below itself";
        mountFileSystem(disk + "/inner", 64);
        EXPECT_TRUE(hasMountPointBelow(disk));
    });
}

TEST(MountPoints, aSecondMountOfADiskIsASeparateMount) {
    const TemporaryFolder folder;
    runWithOwnMounts([&] {
        const std::string here = std::filesystem::canonical(folder.path()).string();
        ASSERT_TRUE(makePrivateFolders(here + "/real/sub"));
        mountAgain(here + "/real", here + "/again");
        EXPECT_EQ(*topFolderOf(here + "/again/sub"), here + "/again");
        EXPECT_NE(*topFolderOf(here + "/real/sub"), here + "/again");
        Result<FileDescriptor> opened = openFolder(here);
        ASSERT_TRUE(opened);
        EXPECT_TRUE(isMountPoint({opened->number(), "again"}));
        EXPECT_FALSE(isMountPoint({opened->number(), "real"}));
    });
}

TEST(MountPoints, theTableShowsWhetherAWholeFileSystemIsMounted) {
    const TemporaryFolder folder;
    folder.write("file", "x");
    runWithOwnMounts([&] {
        const std::string here = std::filesystem::canonical(folder.path()).string();
        mountFileSystem(here + "/di sk\\\n", 64);
        ASSERT_TRUE(makeFolder(here + "/di sk\\\n/sub"));
        mountAgain(here + "/di sk\\\n/sub", here + "/again");
        const std::vector<MountPoint> points = mountPoints().value();
        ASSERT_GE(points.size(), 2u);
        EXPECT_EQ(points.end()[-2].path, here + "/di sk\\\n");
        EXPECT_TRUE(points.end()[-2].showsWhole);
        EXPECT_EQ(points.back().path, here + "/again");
        EXPECT_FALSE(points.back().showsWhole) << "it may be a file";
    });
}

TEST(MountPoints, withoutProcTheTableIsNotFound) {
    runWithOwnMounts([] {
        ASSERT_EQ(::mount("tmpfs", "/proc", "tmpfs", 0, nullptr), 0);
        EXPECT_EQ(mountPoints().failure().reason, Reason::notFound);
        EXPECT_FALSE(hasMountPointBelow("/"));
    });
}

TEST(MountPoints, theTopFolderOfTheRootIsTheRoot) { EXPECT_EQ(*topFolderOf("/"), "/"); }

TEST(MountPoints, procIsAMountPointAndAnOrdinaryFileIsNot) {
    const TemporaryFolder folder;
    folder.write("a", "x");
    std::filesystem::create_symlink("/proc", folder / "link");
    Result<FileDescriptor> root = openFolder("/"), here = openFolder(folder / "");
    ASSERT_TRUE(root && here);
    EXPECT_TRUE(isMountPoint({root->number(), "proc"}));
    EXPECT_FALSE(isMountPoint({here->number(), "a"}));
    EXPECT_FALSE(isMountPoint({here->number(), "link"})) << "a link to a mount point is none";
    EXPECT_FALSE(hasMountPointBelow(std::filesystem::canonical(folder.path()).string()));
}

} // namespace
} // namespace kestrine
