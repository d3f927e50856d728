#include "platform/finder/Volumes.h"
#include "tests/platform/finder/FinderTesting.h"
#include "tests/support/IsolatedProcess.h"

#include <algorithm>
#include <optional>
#include <set>
#include <sys/mount.h>

namespace kestrine {
namespace {

using testing::mountAgain;
using testing::mountFileSystem;
using testing::runWithOwnMounts;

class Volumes : public testing::FinderTest {
protected:
    const std::string here_ = folder_.path().string();

    /// The name of the volume mounted there.
    static std::optional<NSString> nameAt(const std::string& mountPoint) {
        const std::vector<Volume> volumes = mountedVolumes().value();
        const auto found = std::find_if(volumes.begin(), volumes.end(), [&](const Volume& volume) {
            return volume.mountPoint == mountPoint;
        });
        return found == volumes.end() ? std::nullopt : std::optional(found->name);
    }
};

TEST_F(Volumes, theStartUpVolumeComesFirst) {
    const std::vector<Volume> volumes = mountedVolumes().value();
    EXPECT_EQ(volumes.front().mountPoint, "/");
    EXPECT_EQ(volumes.front().name, u"System");
}

TEST_F(Volumes, theCatalogResolvesDotsAtTheEndOfAPath) {
    const CatalogEntry folder = catalogEntry(here_).value();
    for (const char* path : {"/from/..", "/.", "/from/../"}) {
        EXPECT_EQ(catalogEntry(here_ + path).value().name, folder.name) << path;
        EXPECT_EQ(catalogEntry(here_ + path).value().parent, folder.parent) << path;
    }
}

TEST_F(Volumes, allHaveDifferentNamesAndPlaces) {
    std::set<std::string> places;
    std::set<NSString> names;
    const std::vector<Volume> volumes = mountedVolumes().value();
    for (const Volume& volume : volumes) {
        EXPECT_FALSE(volume.name.isEmpty()) << volume.mountPoint;
        EXPECT_FALSE(volume.name.contains(u":")) << volume.mountPoint;
        EXPECT_TRUE(names.insert(volume.name).second) << volume.name.utf8();
        EXPECT_TRUE(places.insert(volume.mountPoint).second) << volume.mountPoint;
    }
    EXPECT_GT(places.size(), 1u) << "every Linux system has at least /proc mounted";
}

TEST_F(Volumes, aVolumeHasTheNameOfItsFolder) {
    runWithOwnMounts([&] {
        mountFileSystem(here_ + "/my disk", 64);
        mountFileSystem(here_ + "/a:b \xFF\n", 64);
        EXPECT_EQ(nameAt(here_ + "/my disk"), u"my disk");
        EXPECT_EQ(nameAt(here_ + "/a:b \xFF\n"), NSString(u"a/b \xDCFF\n"));
    });
}

TEST_F(Volumes, aLaterVolumeOfTheSameNameGetsANumber) {
    runWithOwnMounts([&] {
        for (const char* place : {"/from/kestrine disk", "/to/kestrine disk", "/kestrine disk 1", "/System"})
            mountFileSystem(here_ + place, 64);
        EXPECT_EQ(nameAt(here_ + "/from/kestrine disk"), u"kestrine disk");
        EXPECT_EQ(nameAt(here_ + "/to/kestrine disk"), u"kestrine disk 1");
        EXPECT_EQ(nameAt(here_ + "/kestrine disk 1"), u"kestrine disk 1 1");
        EXPECT_EQ(nameAt(here_ + "/System"), u"System 1");
    });
}

TEST_F(Volumes, numberedNamesStayWithinTheLengthLimit) {
    runWithOwnMounts([&] {
        const std::string longest(255, 'x');
        mountFileSystem(from_ + "/" + longest, 64);
        mountFileSystem(to_ + "/" + longest, 64);
        EXPECT_EQ(nameAt(from_ + "/" + longest)->utf8(), longest);
        EXPECT_EQ(nameAt(to_ + "/" + longest)->utf8(), std::string(253, 'x') + " 1");
    });
}

TEST_F(Volumes, oneMountOverAnotherIsOneVolume) {
    runWithOwnMounts([&] {
        mountFileSystem(here_ + "/disk", 64);
        ASSERT_EQ(::mount("tmpfs", (here_ + "/disk").c_str(), "tmpfs", 0, nullptr), 0);
        const std::vector<Volume> volumes = mountedVolumes().value();
        EXPECT_EQ(std::count_if(volumes.begin(), volumes.end(),
                                [&](const Volume& volume) { return volume.mountPoint == here_ + "/disk"; }),
                  1);
    });
}

TEST_F(Volumes, aBindMountedFolderIsAVolumeAndAFileIsNot) {
    runWithOwnMounts([&] {
        mountAgain(from_, here_ + "/again");
        const std::string file = write(here_ + "/file"), target = write(to_ + "/target");
        ASSERT_EQ(::mount(file.c_str(), target.c_str(), nullptr, MS_BIND, nullptr), 0);
        EXPECT_EQ(nameAt(here_ + "/again"), u"again");
        EXPECT_EQ(nameAt(target), std::nullopt);
        EXPECT_EQ(catalogEntry(target)->parent, to_);
    });
}

TEST_F(Volumes, withoutATableOfMountsThereIsOnlyTheStartUpVolume) {
    runWithOwnMounts([&] {
        ASSERT_EQ(::mount("tmpfs", "/proc", "tmpfs", 0, nullptr), 0);
        EXPECT_EQ(mountedVolumes().value().size(), 1u);
        EXPECT_EQ(catalogEntry("/")->name, u"System");
    });
}

TEST_F(Volumes, theParentsOfAnItemEndWithTheTopLevel) {
    const std::string file = write(from_ + "/a.jpg");
    CatalogEntry entry = catalogEntry(file).value();
    EXPECT_EQ(entry.name, u"a.jpg");
    EXPECT_EQ(entry.parent, from_);
    std::string top;
    for (; !entry.parent.empty(); entry = catalogEntry(top).value())
        top = entry.parent;
    EXPECT_EQ(entry.name, nameAt(top));
    EXPECT_EQ(catalogEntry(entry.parent).failure().reason, Reason::refused);
    EXPECT_FALSE(topLevelName().isEmpty());
}

TEST_F(Volumes, theParentsOnAMountedDiskEndAboveTheDisk) {
    runWithOwnMounts([&] {
        mountFileSystem(here_ + "/disk", 64);
        const std::string file = write(here_ + "/disk/a.jpg");
        EXPECT_EQ(catalogEntry(file)->parent, here_ + "/disk");
        EXPECT_EQ(catalogEntry(here_ + "/disk")->name, u"disk");
        EXPECT_EQ(catalogEntry(here_ + "/disk")->parent, "");
    });
}

TEST_F(Volumes, namesShowSlashesForColonsAndKeepInvalidBytes) {
    for (const auto& [name, shown] : {std::pair("12:30", u"12/30"), std::pair("\xFFx", u"\xDCFFx"),
                                      std::pair("a\nb", u"a\nb"), std::pair("\xC3\xA9", u"\u00E9")})
        EXPECT_EQ(catalogEntry(write(from_ + "/" + name))->name, shown);
}

TEST_F(Volumes, aLinkIsNotFollowedAndLinksAboveItAreResolved) {
    std::filesystem::create_symlink("nowhere", from_ + "/dangling");
    std::filesystem::create_symlink(from_, to_ + "/link");
    EXPECT_EQ(catalogEntry(to_ + "/link/dangling")->name, u"dangling");
    EXPECT_EQ(catalogEntry(to_ + "/link/dangling")->parent, from_);
    EXPECT_EQ(catalogEntry(to_ + "/link")->parent, to_);
    EXPECT_EQ(catalogEntry(to_ + "/../from/.")->parent, here_);
}

TEST_F(Volumes, aMissingItemHasNoEntry) {
    const std::string file = write(from_ + "/a.jpg");
    for (const std::string& path : {from_ + "/b.jpg", from_ + "/no/b.jpg", file + "/..", file + "/x"})
        EXPECT_EQ(catalogEntry(path).failure().reason, Reason::notFound) << path;
}

} // namespace
} // namespace kestrine
