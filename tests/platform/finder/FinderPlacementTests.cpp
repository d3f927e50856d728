// The last step of every copy and move, also when another process changed the folder meanwhile.
#include "platform/finder/FinderPlacement.h"
#include "platform/host/files/Folders.h"
#include "tests/platform/finder/FinderTesting.h"
#include "tests/support/IsolatedProcess.h"

#include <cerrno>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace kestrine {
namespace {

using ::testing::ElementsAre;
using testing::namesIn;
using testing::readFile;

class FinderPlacement : public testing::FinderTest {
protected:
    const FileDescriptor opened_ = openFolder(to_).value();

    FolderEntry at(const std::string& name) const { return {opened_.number(), name}; }
};

TEST_F(FinderPlacement, aNameThatWasTakenMeanwhileIsNotReplaced) {
    write(to_ + "/staged", "new");
    write(to_ + "/a.jpg", "old");
    EXPECT_EQ(putInPlace("staged", at("a.jpg"), Replacing::no).failure().reason, Reason::alreadyExists);
    EXPECT_EQ(readFile(to_ + "/staged") + readFile(to_ + "/a.jpg"), "newold");
}

TEST_F(FinderPlacement, aNameThatWasFreedMeanwhileIsUsed) {
    write(to_ + "/staged/new.jpg");
    Result<Placement> placed = putInPlace("staged", at("album"), Replacing::yes);
    ASSERT_TRUE(placed);
    EXPECT_FALSE(placed->hasReplaced);
    EXPECT_TRUE(removeReplaced(*placed, at("album")));
    EXPECT_THAT(namesIn(to_), ElementsAre("album"));
}

TEST_F(FinderPlacement, aReplacedFolderIsKeptUntilItIsRemovedExplicitly) {
    write(to_ + "/staged", "new");
    write(to_ + "/album/old.jpg", "old");
    Result<Placement> placed = putInPlace("staged", at("album"), Replacing::yes);
    ASSERT_TRUE(placed);
    EXPECT_TRUE(placed->hasReplaced);
    EXPECT_EQ(readFile(to_ + "/" + placed->hidden + "/old.jpg"), "old");
    EXPECT_TRUE(removeReplaced(*placed, at("album")));
    EXPECT_THAT(namesIn(to_), ElementsAre("album"));
    EXPECT_EQ(readFile(to_ + "/album"), "new");
}

TEST_F(FinderPlacement, theOldItemGetsItsNameBackWhenTheNewOneCannotBeRenamed) {
    if (::geteuid() != 0)
        GTEST_SKIP() << "only root can prepare folders of another user";
    write(to_ + "/staged/new.jpg", "new");
    write(to_ + "/album/old.jpg", "old");
    openToAll();
    // In a sticky folder an ordinary user can rename only their own items.
    ASSERT_EQ(::chmod(to_.c_str(), 01777), 0);
    ASSERT_EQ(::chown((to_ + "/album").c_str(), 65534, 65534), 0);
    testing::runAsOrdinaryUser([&] {
        if (!testing::failSystemCall(SYS_renameat2, EINVAL))
            GTEST_SKIP() << "this system permits no filter of system calls";
        EXPECT_EQ(putInPlace("staged", at("album"), Replacing::yes).failure().reason, Reason::notPermitted);
    });
    EXPECT_THAT(namesIn(to_), ElementsAre("album", "staged"));
    EXPECT_EQ(readFile(to_ + "/album/old.jpg"), "old");
}

TEST_F(FinderPlacement, aCopyFindsTheFirstFreeName) {
    for (const char* name : {"/a.jpg", "/a copy.jpg", "/a copy 3.jpg", "/staged"})
        write(to_ + name);
    EXPECT_EQ(putBeside("staged", at("a.jpg")).value(), "a copy 2.jpg");
    EXPECT_EQ(putBeside("missing", at("a.jpg")).failure().reason, Reason::notFound);
}

} // namespace
} // namespace kestrine
