// Operations on an item in its own folder, below itself, and over its own parent; links; the trash.
#include "platform/finder/FinderErrors.h"
#include "tests/platform/finder/FinderTesting.h"
#include "tests/support/CurrentFolder.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/IsolatedProcess.h"

#include <set>
#include <sys/resource.h>

namespace kestrine {
namespace {

using ::testing::ElementsAre;
using testing::EnvironmentVariable;
using ::testing::IsEmpty;
using testing::namesIn;
using testing::numberOf;
using testing::readFile;
using testing::runIsolated;

constexpr std::int32_t notFound = -43, nameIsTaken = -15267, forbidden = -10006;

class Finder : public testing::FinderTest {
protected:
    const std::string home_ = makeFolder(folder_.path() / "home");
};

TEST_F(Finder, anItemMovedToWhereItIsStays) {
    const std::string file = write(from_ + "/a.jpg");
    for (const Replacing replacing : {Replacing::no, Replacing::yes})
        EXPECT_EQ(finderMove({file}, from_, replacing), std::nullopt);
    EXPECT_EQ(finderDuplicate({file}, from_, Replacing::yes), std::nullopt)
        << "the copy would replace itself";
    EXPECT_THAT(namesIn(from_), ElementsAre("a.jpg"));
    EXPECT_EQ(readFile(file), "content");
}

TEST_F(Finder, anItemDuplicatedInItsFolderGetsTheNameOfACopy) {
    const std::string file = write(from_ + "/a.tar.gz"), hidden = write(from_ + "/.b");
    write(from_ + "/album/c.jpg");
    for (int time = 0; time < 3; ++time)
        ASSERT_EQ(finderDuplicate({file, hidden, from_ + "/album"}, from_, Replacing::no), std::nullopt);
    EXPECT_THAT(namesIn(from_), ElementsAre(".b", ".b copy", ".b copy 2", ".b copy 3", "a.tar copy 2.gz",
                                            "a.tar copy 3.gz", "a.tar copy.gz", "a.tar.gz", "album",
                                            "album copy", "album copy 2", "album copy 3"));
    EXPECT_EQ(readFile(from_ + "/album copy 2/c.jpg"), "content");
}

TEST_F(Finder, theCopyOfALongNameHasAShorterOne) {
    const std::string name(255, 'n');
    ASSERT_EQ(finderDuplicate({write(from_ + "/" + name)}, from_, Replacing::no), std::nullopt);
    EXPECT_THAT(namesIn(from_), ElementsAre(std::string(250, 'n') + " copy", name));
}

TEST_F(Finder, aFolderIsNotPutIntoItself) {
    write(from_ + "/album/sub/a.jpg");
    std::filesystem::create_directory_symlink(from_ + "/album/sub", folder_ / "link");
    for (const auto operation : {finderDuplicate, finderMove})
        for (const Replacing replacing : {Replacing::no, Replacing::yes})
            for (const std::string& into : {from_ + "/album", from_ + "/album/sub", folder_ / "link"})
                EXPECT_EQ(numberOf(operation({from_ + "/album"}, into, replacing)), forbidden) << into;
    EXPECT_THAT(namesIn(from_ + "/album"), ElementsAre("sub"));
    EXPECT_THAT(namesIn(from_ + "/album/sub"), ElementsAre("a.jpg"));
}

TEST_F(Finder, anAliasedFolderIsNotPutIntoItself) {
    testing::runWithOwnMounts([&] {
        write(from_ + "/album/sub/a.jpg");
        testing::mountAgain(from_ + "/album", folder_ / "again");
        EXPECT_EQ(numberOf(finderDuplicate({from_ + "/album"}, folder_ / "again", Replacing::no)), forbidden);
        EXPECT_NE(finderDuplicate({from_ + "/album"}, folder_ / "again/sub", Replacing::no), std::nullopt);
        EXPECT_THAT(namesIn(from_ + "/album"), ElementsAre("sub"));
        EXPECT_THAT(namesIn(from_ + "/album/sub"), ElementsAre("a.jpg"));
    });
}

TEST_F(Finder, aFolderWhoseNameBeginsTheSameIsAnotherFolder) {
    write(from_ + "/album/a.jpg");
    const std::string into = makeFolder(from_ + "/album 2");
    EXPECT_EQ(finderMove({from_ + "/album"}, into, Replacing::no), std::nullopt);
    EXPECT_EQ(readFile(into + "/album/a.jpg"), "content");
}

TEST_F(Finder, anItemDoesNotReplaceItsOwnFolder) {
    write(from_ + "/x/x", "inner");
    write(from_ + "/x/other", "other");
    for (const auto operation : {finderDuplicate, finderMove}) {
        EXPECT_EQ(numberOf(operation({from_ + "/x/x"}, from_, Replacing::yes)), forbidden);
        EXPECT_EQ(numberOf(operation({from_ + "/x/x"}, from_, Replacing::no)), nameIsTaken);
    }
    EXPECT_EQ(readFile(from_ + "/x/x") + readFile(from_ + "/x/other"), "innerother");
}

TEST_F(Finder, movingAHardLinkOverAnotherLeavesOneName) {
    const std::string file = write(from_ + "/a.jpg");
    std::filesystem::create_hard_link(file, to_ + "/a.jpg");
    EXPECT_EQ(finderMove({file}, to_, Replacing::yes), std::nullopt);
    EXPECT_THAT(namesIn(from_), IsEmpty());
    EXPECT_THAT(namesIn(to_), ElementsAre("a.jpg"));
    EXPECT_EQ(readFile(to_ + "/a.jpg"), "content");
}

TEST_F(Finder, aCopyReplacesAHardLinkToItsFile) {
    const std::string file = write(from_ + "/a.jpg");
    std::filesystem::create_hard_link(file, to_ + "/a.jpg");
    EXPECT_EQ(finderDuplicate({file}, to_, Replacing::yes), std::nullopt);
    EXPECT_EQ(std::filesystem::hard_link_count(file), 1u);
    EXPECT_THAT(namesIn(to_), ElementsAre("a.jpg"));
}

TEST_F(Finder, moreItemsThanAProcessMayOpenAreMoved) {
    runIsolated([&] {
        const rlimit few{40, 40};
        ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &few), 0);
        std::vector<std::string> items;
        for (int number = 0; number < 100; ++number)
            items.push_back(write(from_ + "/" + std::to_string(number) + "/" + std::to_string(number)));
        EXPECT_EQ(finderMove(items, to_, Replacing::no), std::nullopt);
        EXPECT_EQ(namesIn(to_).size(), items.size());
    });
}

TEST_F(Finder, aLinkPointsToTheItem) {
    const std::string file = write(from_ + "/a \xFF.jpg");
    std::filesystem::create_symlink("nowhere", from_ + "/dangling");
    EXPECT_EQ(finderLink({from_ + "/../from/a \xFF.jpg", from_ + "/dangling", from_ + "/"}, to_),
              std::nullopt);
    EXPECT_EQ(std::filesystem::read_symlink(to_ + "/a \xFF.jpg"), file);
    EXPECT_EQ(std::filesystem::read_symlink(to_ + "/dangling"), from_ + "/dangling");
    EXPECT_EQ(std::filesystem::read_symlink(to_ + "/from"), from_);
}

TEST_F(Finder, aLinkDoesNotReplaceAnItem) {
    const std::string file = write(from_ + "/a.jpg");
    write(to_ + "/a.jpg", "old");
    EXPECT_EQ(numberOf(finderLink({file}, to_)), nameIsTaken);
    EXPECT_EQ(numberOf(finderLink({file}, from_)), nameIsTaken) << "the item itself has the name";
    EXPECT_EQ(numberOf(finderLink({file, from_ + "/missing"}, home_)), notFound);
    EXPECT_EQ(readFile(to_ + "/a.jpg"), "old");
    EXPECT_THAT(namesIn(home_), IsEmpty());
}

TEST_F(Finder, deletedItemsAreInTheTrash) {
    const EnvironmentVariable data("XDG_DATA_HOME", home_ + "/data");
    const std::string trash = home_ + "/data/Trash/files";
    const std::string file = write(from_ + "/12:30 \"\xFF\n.jpg");
    write(from_ + "/album/b.jpg", "b");
    EXPECT_EQ(numberOf(finderDelete({file, from_ + "/missing"})), notFound);
    EXPECT_EQ(readFile(file), "content") << "no item is moved unless all are found";
    EXPECT_EQ(finderDelete({file, from_ + "/album/", file}), std::nullopt);
    EXPECT_THAT(namesIn(from_), IsEmpty());
    EXPECT_THAT(namesIn(trash), ElementsAre("12:30 \"\xFF\n.jpg", "album"));
    EXPECT_EQ(readFile(trash + "/album/b.jpg"), "b");
    EXPECT_EQ(namesIn(home_ + "/data/Trash/info").size(), 2u) << "each item has a record";
}

TEST_F(Finder, anItemThatTheTrashRefusesStays) {
    const EnvironmentVariable data("XDG_DATA_HOME", home_ + "/data");
    const testing::CurrentFolder current(from_);
    for (const std::string& path : {std::string("/"), std::string("/proc"), from_, folder_.path().string()})
        EXPECT_EQ(numberOf(finderDelete({path})), forbidden) << path;
    EXPECT_TRUE(std::filesystem::exists(from_));
}

TEST_F(Finder, anEmptyListOfItemsSucceeds) {
    EXPECT_EQ(finderDelete({}), std::nullopt);
    EXPECT_EQ(finderMove({}, to_, Replacing::no), std::nullopt);
    EXPECT_EQ(numberOf(finderMove({}, to_ + "/missing", Replacing::no)), notFound);
}

TEST(FinderErrors, everyReasonHasItsOwnNumber) {
    std::set<std::int32_t> numbers;
    for (int reason = 1; reason <= static_cast<int>(Reason::empty); ++reason) {
        const std::int32_t number = finderErrorNumber(static_cast<Reason>(reason));
        EXPECT_LT(number, 0);
        EXPECT_TRUE(numbers.insert(number).second) << reason;
    }
    const FinderError error = finderError({Reason::noSpace, "the disk is full \xFF"});
    EXPECT_EQ(error.number, -34);
    EXPECT_EQ(error.message.utf8(), "the disk is full \xFF");
}

} // namespace
} // namespace kestrine
