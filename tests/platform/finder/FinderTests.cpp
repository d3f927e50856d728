// What the Finder promises of items brought to a folder, on one file system and between two.
#include "platform/host/files/ExtendedAttributes.h"
#include "tests/platform/finder/FinderTesting.h"
#include "tests/support/IsolatedProcess.h"
#include "tests/support/SystemFeatures.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace kestrine {
namespace {

using testing::bytesOf;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testing::isOnAnotherDevice;
using testing::namesIn;
using testing::numberOf;
using testing::readFile;
using testing::TemporaryFolder;

constexpr std::int32_t notFound = -43, nameIsTaken = -15267, noRights = -5000, forbidden = -10006,
                       cannot = -1426;

/// The folder to bring items to lies beside the other, or on the file system of /dev/shm.
class Transfer : public testing::FinderTest, public ::testing::WithParamInterface<const char*> {
protected:
    void SetUp() override {
        if (!isBetweenVolumes())
            return;
        if (!isOnAnotherDevice("/dev/shm"))
            GTEST_SKIP() << "/dev/shm is on the file system of the temporary folder";
        elsewhere_ = std::make_unique<TemporaryFolder>("/dev/shm");
        to_ = makeFolder(elsewhere_->path() / "to");
    }
    static bool isBetweenVolumes() { return std::string_view(GetParam()) == "betweenVolumes"; }

    std::unique_ptr<TemporaryFolder> elsewhere_;
};

INSTANTIATE_TEST_SUITE_P(Finder, Transfer, ::testing::Values("onOneVolume", "betweenVolumes"),
                         [](const auto& test) { return std::string(test.param); });

TEST_P(Transfer, movedItemsAreInTheFolderAndNoLongerWhereTheyWere) {
    write(from_ + "/a.jpg", "a");
    write(from_ + "/album/sub/b.jpg", "b");
    std::filesystem::create_symlink("nowhere", from_ + "/link");
    EXPECT_EQ(finderMove({from_ + "/a.jpg", from_ + "/album", from_ + "/link"}, to_, Replacing::no),
              std::nullopt);
    EXPECT_THAT(namesIn(from_), IsEmpty());
    EXPECT_THAT(namesIn(to_), ElementsAre("a.jpg", "album", "link"));
    EXPECT_EQ(readFile(to_ + "/a.jpg") + readFile(to_ + "/album/sub/b.jpg"), "ab");
    EXPECT_EQ(std::filesystem::read_symlink(to_ + "/link"), "nowhere");
}

TEST_P(Transfer, duplicatedItemsAreInBothFolders) {
    write(from_ + "/a.jpg", "a");
    write(from_ + "/album/sub/b.jpg", "b");
    EXPECT_EQ(finderDuplicate({from_ + "/a.jpg", from_ + "/album/"}, to_ + "/", Replacing::no), std::nullopt);
    for (const std::string& folder : {from_, to_}) {
        EXPECT_THAT(namesIn(folder), ElementsAre("a.jpg", "album"));
        EXPECT_EQ(readFile(folder + "/a.jpg") + readFile(folder + "/album/sub/b.jpg"), "ab");
    }
}

TEST_P(Transfer, commentsLabelsRightsAndTimesComeAlong) {
    if (!testing::keepsAttributes() || !testing::keepsAttributes(to_))
        GTEST_SKIP() << "one of the file systems keeps no extended attributes";
    const Bytes label(32, 4);
    for (const auto operation : {finderDuplicate, finderMove}) {
        const std::string file = write(from_ + "/a.jpg");
        ASSERT_TRUE(setExtendedAttribute(file, "user.xdg.comment", bytesOf("a comment")));
        ASSERT_TRUE(setExtendedAttribute(file, "user.com.apple.FinderInfo", label));
        ASSERT_EQ(::chmod(file.c_str(), 0640), 0);
        const timespec times[2] = {{1'000'000'000, 0}, {1'100'000'000, 987'654'321}};
        ASSERT_EQ(::utimensat(AT_FDCWD, file.c_str(), times, 0), 0);
        ASSERT_EQ(operation({file}, to_, Replacing::yes), std::nullopt);
        const std::string there = to_ + "/a.jpg";
        EXPECT_EQ(getExtendedAttribute(there, "user.xdg.comment").value(), bytesOf("a comment"));
        EXPECT_EQ(getExtendedAttribute(there, "user.com.apple.FinderInfo").value(), label);
        struct stat status {};
        ASSERT_EQ(::stat(there.c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 07777, 0640u);
        EXPECT_EQ(status.st_mtim.tv_sec, 1'100'000'000);
    }
}

TEST_P(Transfer, oddNamesAreNamesLikeOthers) {
    for (const std::string name :
         {"\"quoted\"", "12:30", "line\nfeed", "\xFF\xFE", "-rf", "%s%n", " ", "back\\slash", "..."}) {
        const std::string file = write(from_ + "/" + name, name);
        EXPECT_EQ(finderDuplicate({file}, to_, Replacing::no), std::nullopt) << name;
        EXPECT_EQ(readFile(to_ + "/" + name), name);
        EXPECT_EQ(finderMove({file}, to_, Replacing::yes), std::nullopt) << name;
        EXPECT_THAT(namesIn(from_), IsEmpty());
    }
    EXPECT_EQ(namesIn(to_).size(), 9u);
}

TEST_P(Transfer, aTakenNameIsAnErrorAndBothItemsStay) {
    for (const auto operation : {finderDuplicate, finderMove}) {
        const std::string file = write(from_ + "/a.jpg", "new");
        write(to_ + "/a.jpg", "old");
        EXPECT_EQ(numberOf(operation({file}, to_, Replacing::no)), nameIsTaken);
        EXPECT_EQ(readFile(file) + readFile(to_ + "/a.jpg"), "newold");
        EXPECT_THAT(namesIn(to_), ElementsAre("a.jpg"));
    }
}

TEST_P(Transfer, aDanglingLinkHasItsNameAndIsNoWayOut) {
    const std::string file = write(from_ + "/a.jpg", "new");
    std::filesystem::create_symlink(from_ + "/elsewhere", to_ + "/a.jpg");
    EXPECT_EQ(numberOf(finderMove({file}, to_, Replacing::no)), nameIsTaken);
    EXPECT_EQ(finderMove({file}, to_, Replacing::yes), std::nullopt);
    EXPECT_TRUE(std::filesystem::is_regular_file(std::filesystem::symlink_status(to_ + "/a.jpg")));
    EXPECT_THAT(namesIn(from_), IsEmpty()) << "the link was replaced, not followed";
}

TEST_P(Transfer, replacingPutsFilesAndFoldersInPlaceOfEachOther) {
    for (const auto operation : {finderDuplicate, finderMove})
        for (const std::string newOne : {"/x", "/x/new"})
            for (const std::string oldOne : {"/x", "/x/old"}) {
                std::filesystem::remove_all(from_ + "/x");
                std::filesystem::remove_all(to_ + "/x");
                write(from_ + newOne, "new");
                write(to_ + oldOne, "old");
                EXPECT_EQ(operation({from_ + "/x"}, to_, Replacing::yes), std::nullopt);
                EXPECT_THAT(namesIn(to_), ElementsAre("x"));
                EXPECT_EQ(readFile(to_ + newOne), "new");
                EXPECT_FALSE(std::filesystem::exists(to_ + "/x/old"));
                EXPECT_EQ(std::filesystem::exists(from_ + "/x"), operation == finderDuplicate);
            }
}

TEST_P(Transfer, twoItemsOfOneNameAreRefusedBeforeAnythingIsDone) {
    const std::string one = write(from_ + "/one/a.jpg", "1"), two = write(from_ + "/two/a.jpg", "2");
    const std::string first = write(from_ + "/first.jpg");
    for (const Replacing replacing : {Replacing::no, Replacing::yes})
        for (const auto operation : {finderDuplicate, finderMove})
            EXPECT_EQ(numberOf(operation({first, one, two}, to_, replacing)), nameIsTaken);
    EXPECT_EQ(readFile(one) + readFile(two), "12");
    EXPECT_THAT(namesIn(to_), IsEmpty());
}

TEST_P(Transfer, anItemNamedTwiceCountsOnce) {
    const std::string file = write(from_ + "/a.jpg");
    EXPECT_EQ(finderMove({file, from_ + "/../from//a.jpg"}, to_, Replacing::no), std::nullopt);
    EXPECT_THAT(namesIn(to_), ElementsAre("a.jpg"));
}

TEST_P(Transfer, allItemsAndTheFolderAreLookedUpBeforeAnythingIsDone) {
    const std::string file = write(from_ + "/a.jpg");
    for (const auto operation : {finderDuplicate, finderMove}) {
        EXPECT_EQ(numberOf(operation({file, from_ + "/missing"}, to_, Replacing::no)), notFound);
        EXPECT_EQ(numberOf(operation({file}, to_ + "/missing", Replacing::no)), notFound);
        EXPECT_EQ(numberOf(operation({file}, file, Replacing::no)), notFound);
        EXPECT_EQ(numberOf(operation({""}, to_, Replacing::no)), -50);
        for (const char* whole : {"/", "/.", ".."})
            EXPECT_EQ(numberOf(operation({file, whole}, to_, Replacing::no)), forbidden) << whole;
    }
    EXPECT_THAT(namesIn(from_), ElementsAre("a.jpg"));
    EXPECT_THAT(namesIn(to_), IsEmpty());
}

TEST_P(Transfer, theFirstFailureEndsTheWorkAndWhatWasDoneStaysDone) {
    const std::string one = write(from_ + "/1"), two = write(from_ + "/2"), three = write(from_ + "/3");
    write(to_ + "/2", "old");
    EXPECT_EQ(numberOf(finderMove({one, two, three}, to_, Replacing::no)), nameIsTaken);
    EXPECT_THAT(namesIn(from_), ElementsAre("2", "3"));
    EXPECT_THAT(namesIn(to_), ElementsAre("1", "2"));
}

TEST_P(Transfer, theFolderMayBeReachedThroughALink) {
    std::filesystem::create_directory_symlink(to_, folder_ / "link");
    EXPECT_EQ(finderMove({write(from_ + "/a.jpg")}, folder_ / "link", Replacing::no), std::nullopt);
    EXPECT_THAT(namesIn(to_), ElementsAre("a.jpg"));
}

TEST_P(Transfer, aPipeInAFolderIsMovedByNameButNeverCopied) {
    std::filesystem::create_directory(from_ + "/album");
    ASSERT_EQ(::mkfifo((from_ + "/album/pipe").c_str(), 0600), 0);
    write(to_ + "/album/old.jpg");
    EXPECT_EQ(numberOf(finderDuplicate({from_ + "/album"}, to_, Replacing::yes)), cannot);
    EXPECT_EQ(numberOf(finderMove({from_ + "/album"}, to_, Replacing::yes)), isBetweenVolumes() ? cannot : 0);
    EXPECT_THAT(namesIn(to_), ElementsAre("album"));
    EXPECT_THAT(namesIn(to_ + "/album"), ElementsAre(isBetweenVolumes() ? "old.jpg" : "pipe"));
}

TEST_P(Transfer, withoutRightsNothingHappens) {
    const std::string file = write(from_ + "/a.jpg", "new");
    write(to_ + "/a.jpg", "old");
    openToAll();
    for (const std::string& folder : {folder_.path().string(), to_ + "/.."})
        ASSERT_EQ(::chmod(folder.c_str(), 0755), 0);
    ASSERT_EQ(::chmod(to_.c_str(), 0555), 0);
    testing::runAsOrdinaryUser([&] {
        for (const auto operation : {finderDuplicate, finderMove})
            EXPECT_EQ(numberOf(operation({file}, to_, Replacing::yes)), noRights);
        EXPECT_EQ(numberOf(finderLink({from_}, to_)), noRights);
        EXPECT_EQ(readFile(file) + readFile(to_ + "/a.jpg"), "newold");
    });
    ASSERT_EQ(::chmod(to_.c_str(), 0777), 0);
    EXPECT_EQ(namesIn(from_).size() + namesIn(to_).size(), 2u);
}

TEST_P(Transfer, outOfAFolderWithoutRightsItemsAreCopiedButNotMoved) {
    const std::string file = write(from_ + "/a.jpg", "content");
    openToAll();
    for (const std::string& folder : {to_, to_ + "/.."})
        ASSERT_EQ(::chmod(folder.c_str(), 0777), 0);
    ASSERT_EQ(::chmod(from_.c_str(), 0555), 0);
    testing::runAsOrdinaryUser([&] {
        EXPECT_EQ(numberOf(finderMove({file}, to_, Replacing::no)), noRights);
        EXPECT_THAT(namesIn(to_), IsEmpty());
        EXPECT_EQ(finderDuplicate({file}, to_, Replacing::no), std::nullopt);
    });
    ASSERT_EQ(::chmod(from_.c_str(), 0777), 0);
    EXPECT_EQ(readFile(to_ + "/a.jpg") + readFile(file), "contentcontent");
}

TEST_P(Transfer, anOldFolderThatCannotGoStaysWhole) {
    write(from_ + "/album/new.jpg");
    write(to_ + "/album/sub/old.jpg");
    openToAll();
    for (const std::string& folder : {to_, to_ + "/..", to_ + "/album", from_ + "/album"})
        ASSERT_EQ(::chmod(folder.c_str(), 0777), 0);
    ASSERT_EQ(::chmod((to_ + "/album/sub").c_str(), 0555), 0);
    testing::runAsOrdinaryUser([&] {
        for (const auto operation : {finderDuplicate, finderMove})
            EXPECT_EQ(numberOf(operation({from_ + "/album"}, to_, Replacing::yes)), noRights);
    });
    ASSERT_EQ(::chmod((to_ + "/album/sub").c_str(), 0777), 0);
    EXPECT_THAT(namesIn(to_), ElementsAre("album"));
    EXPECT_EQ(readFile(to_ + "/album/sub/old.jpg"), "content");
    EXPECT_EQ(readFile(from_ + "/album/new.jpg"), "content");
}

} // namespace
} // namespace kestrine
