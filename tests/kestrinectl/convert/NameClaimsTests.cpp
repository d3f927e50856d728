#include "kestrinectl/convert/NameClaims.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kestrine {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

using Jobs = std::set<std::size_t>;

/// Jobs that want names in a folder where some names are taken.
struct Claims : ::testing::Test {
    std::set<std::string> taken;
    NameClaims claims{[this](const std::string& path) { return taken.contains(path); }};
    std::size_t next = 0;

    Jobs add(const std::vector<std::string>& wanted, const std::string& own = "") {
        return claims.add(next++, wanted, own);
    }
};

TEST_F(Claims, ofDifferentNamesWaitForNothing) {
    EXPECT_THAT(add({"/b.jpg"}), IsEmpty());
    EXPECT_THAT(add({"/a.jpg"}), IsEmpty());
    EXPECT_THAT(add({"/a_1.jpg"}), IsEmpty());
    EXPECT_THAT(add({"/sub/a.jpg"}), IsEmpty());
}

TEST_F(Claims, ofOneNameWaitForTheOneBefore) {
    add({"/a.jpg"});
    add({"/b.jpg"});
    EXPECT_THAT(add({"/a.jpg"}), ElementsAre(0));
    EXPECT_THAT(add({"/a.jpg"}), ElementsAre(2));
}

TEST_F(Claims, ofANameWaitForEarlierOnesThatMayNeedIt) {
    add({"/a.jpg"});
    add({"/a.jpg"});
    EXPECT_THAT(add({"/a_1.jpg"}), ElementsAre(1));
    EXPECT_THAT(add({"/a_2b.jpg"}), IsEmpty());
    EXPECT_THAT(add({"/a_1_1.jpg"}), ElementsAre(1, 2));
}

TEST_F(Claims, thatMayNeedAnEarlierNameWaitForIt) {
    add({"/a_1.jpg"});
    add({"/a.jpg"});
    EXPECT_THAT(add({"/a.jpg"}), ElementsAre(0, 1));
}

TEST_F(Claims, noticeNamesThatAreTaken) {
    taken = {"/a.jpg"};
    add({"/a_1.jpg"});
    EXPECT_THAT(add({"/a.jpg"}), ElementsAre(0));
    EXPECT_THAT(add({"/a_2.jpg"}), ElementsAre(1));
    add({"/b_1.jpg"});
    EXPECT_THAT(add({"/b.jpg"}), IsEmpty());
}

TEST_F(Claims, noticeThatAReplacedOriginalFreesItsName) {
    taken = {"/a.jpg", "/b.jpg"};
    add({"/a.jpg"}, "/a.jpg");
    EXPECT_THAT(add({"/a_1.jpg"}, "/a_1.jpg"), IsEmpty());
    add({"/b.jpg"}, "/b.png");
    EXPECT_THAT(add({"/b_1.jpg"}, "/b_1.jpg"), ElementsAre(2));
}

TEST_F(Claims, ofAFileAndOfAFolderWithItsNameWaitForEachOther) {
    add({"/a/b"});
    EXPECT_THAT(add({"/a"}), ElementsAre(0));
    EXPECT_THAT(add({"/a_1"}), ElementsAre(1));
    EXPECT_THAT(add({"/a.b"}), IsEmpty());
    EXPECT_THAT(add({"/a/b/c/d"}), ElementsAre(0, 1));
    EXPECT_THAT(add({"/ab/c"}), IsEmpty());
}

TEST_F(Claims, considerEveryResult) {
    EXPECT_THAT(add({"/a.png", "/a.gif"}), IsEmpty());
    EXPECT_THAT(add({"/b.png", "/b.gif"}), IsEmpty());
    EXPECT_THAT(add({"/c.png", "/a.gif"}), ElementsAre(0));
    EXPECT_THAT(add({"/d.png", "/d.png"}), IsEmpty());
    EXPECT_THAT(add({"/d_1.png"}), ElementsAre(3));
}

TEST_F(Claims, endWithTheirJob) {
    add({"/a.jpg", "/a.jpg"});
    add({"/a.jpg"});
    claims.remove(1);
    EXPECT_THAT(add({"/a.jpg"}), ElementsAre(0));
    claims.remove(0);
    claims.remove(2);
    EXPECT_THAT(add({"/a.jpg"}), IsEmpty());
    EXPECT_THAT(add({"/a_1.jpg"}), IsEmpty());
    claims.remove(17);
}

} // namespace
} // namespace kestrine
