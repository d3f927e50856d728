#include "platform/finder/FinderPath.h"
#include "platform/finder/Volumes.h"
#include "tests/platform/finder/FinderTesting.h"
#include "tests/support/IsolatedProcess.h"

#include <sys/mount.h>
#include <sys/stat.h>

namespace kestrine {
namespace {

using testing::mountAgain;
using testing::mountFileSystem;
using testing::runWithOwnMounts;

/// Whether both paths lead to the same item; links are not followed.
bool isSameItem(const std::string& one, const std::string& other) {
    struct stat first {
    }, second{};
    return ::lstat(one.c_str(), &first) == 0 && ::lstat(other.c_str(), &second) == 0
           && first.st_dev == second.st_dev && first.st_ino == second.st_ino;
}

class FinderPath : public testing::FinderTest {
protected:
    const std::string here_ = folder_.path().string();

    static void expectRoundTrip(const std::string& path) {
        Result<NSString> text = finderPathOf(path);
        ASSERT_TRUE(text) << path << ": " << text.failure().text;
        for (const NSString& form : {*text, *text + u":"}) {
            Result<std::string> back = pathOfFinderPath(form);
            ASSERT_TRUE(back) << path << ": " << back.failure().text;
            EXPECT_TRUE(isSameItem(path, *back)) << path << " became " << *back;
        }
    }
};

TEST_F(FinderPath, anItemIsNamedFromItsVolumeDownwards) {
    runWithOwnMounts([&] {
        mountFileSystem(here_ + "/kestrine disk", 64);
        const std::string file = write(here_ + "/kestrine disk/sub/12:30.jpg");
        EXPECT_EQ(finderPathOf(file).value(), u"kestrine disk:sub:12/30.jpg");
        EXPECT_EQ(finderPathOf(here_ + "/kestrine disk").value(), u"kestrine disk");
        EXPECT_EQ(pathOfFinderPath(u"kestrine disk:sub:12/30.jpg").value(), file);
        EXPECT_EQ(pathOfFinderPath(u"kestrine disk:sub:").value(), here_ + "/kestrine disk/sub");
        EXPECT_EQ(pathOfFinderPath(u"kestrine disk:").value(), here_ + "/kestrine disk");
    });
}

TEST_F(FinderPath, theRootFolderIsTheStartUpVolume) {
    EXPECT_EQ(finderPathOf("/").value(), u"System");
    EXPECT_EQ(pathOfFinderPath(u"System:").value(), "/");
}

TEST_F(FinderPath, theFinderPathOfEveryNameLeadsBackToTheFile) {
    const std::string names[] = {"plain",
                                 "two words",
                                 "12:30",
                                 "::",
                                 "\"quoted\"",
                                 "back\\slash",
                                 "line\nfeed",
                                 "\xFF\xFE",
                                 "\xC3",
                                 "\xED\xB3\xBF",
                                 "e\xCC\x81",
                                 "\xC3\xA9",
                                 "\xF0\x9F\x98\x80",
                                 " ",
                                 "%s%n",
                                 ".hidden",
                                 "...",
                                 "tab\there",
                                 "-option",
                                 std::string(255, 'n')};
    for (const std::string& name : names) {
        std::filesystem::create_directory(from_ + "/" + name);
        expectRoundTrip(from_ + "/" + name);
        for (const std::string& inner : names)
            expectRoundTrip(write(from_ + "/" + name + "/" + inner));
    }
}

TEST_F(FinderPath, finderPathsLeadBackFromEverywhereInTheSystem) {
    for (const char* path : {"/", "/usr", "/usr/bin/env", "/proc", "/proc/self/status", "/dev/null", "/etc",
                             "/etc/passwd", "/sys/kernel"})
        if (std::filesystem::exists(path))
            expectRoundTrip(path);
    const std::vector<Volume> volumes = mountedVolumes().value();
    for (const Volume& volume : volumes)
        if (std::filesystem::exists(volume.mountPoint))
            expectRoundTrip(volume.mountPoint);
}

TEST_F(FinderPath, linksAreNotFollowed) {
    write(from_ + "/real");
    std::filesystem::create_symlink("real", from_ + "/link");
    std::filesystem::create_symlink("nowhere", from_ + "/dangling");
    std::filesystem::create_symlink(from_, to_ + "/folder");
    for (const char* path : {"/from/link", "/from/dangling", "/to/folder", "/to/folder/link"})
        expectRoundTrip(here_ + path);
}

TEST_F(FinderPath, mountsOverMountsAndInThemLeadBack) {
    runWithOwnMounts([&] {
        const std::string disk = here_ + "/disk";
        mountFileSystem(disk, 64);
        mountFileSystem(disk + "/disk", 64);
        expectRoundTrip(write(disk + "/disk/a.jpg"));
        mountAgain(disk, here_ + "/again");
        expectRoundTrip(write(here_ + "/again/b.jpg"));
        ASSERT_EQ(::mount("tmpfs", disk.c_str(), "tmpfs", 0, nullptr), 0);
        expectRoundTrip(write(disk + "/c.jpg"));
        expectRoundTrip(write(disk + "/disk/d.jpg")); // a plain folder where a covered disk was mounted
        const std::string file = write(here_ + "/file"), target = write(to_ + "/target");
        ASSERT_EQ(::mount(file.c_str(), target.c_str(), nullptr, MS_BIND, nullptr), 0);
        expectRoundTrip(target);
    });
}

TEST_F(FinderPath, anInvalidFinderPathIsMalformed) {
    for (const char16_t* text : {u"", u":", u"::", u":System", u"System::", u"System::tmp", u"System:tmp::"})
        EXPECT_EQ(pathOfFinderPath(text).failure().reason, Reason::malformed) << NSString(text).utf8();
}

TEST_F(FinderPath, whatIsNotThereIsNotFound) {
    const NSString here = finderPathOf(from_).value();
    for (const NSString& text : {NSString(u"no volume of this name"), NSString(u"system"),
                                 NSString(u"System:no such folder:a"), here + u":a.jpg"})
        EXPECT_EQ(pathOfFinderPath(text).failure().reason, Reason::notFound) << text.utf8();
    EXPECT_EQ(finderPathOf(from_ + "/a.jpg").failure().reason, Reason::notFound);
    EXPECT_EQ(finderPathOf("").failure().reason, Reason::refused);
}

TEST_F(FinderPath, dotsAndZeroBytesAreInvalidNames) {
    const NSString here = finderPathOf(from_).value();
    for (const NSString& end : {NSString(u":.."), NSString(u":."), NSString(u":..:to"),
                                NSString(std::u16string(u":\0", 2)), NSString(u":..:from:")})
        EXPECT_EQ(pathOfFinderPath(here + end).failure().reason, Reason::notFound) << end.utf8();
}

} // namespace
} // namespace kestrine
