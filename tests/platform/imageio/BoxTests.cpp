#include "tests/platform/imageio/heif/Boxes.h"

#include <gtest/gtest.h>

namespace kestrine {

namespace {

using testing::box;
using testing::joined;
using testing::u32;
using testing::u8;

} // namespace

TEST(Box, boxesFollowEachOther) {
    const Bytes bytes = joined({box("abcd", {u8(7)}), box("efgh", {})});
    const auto boxes = boxesIn(bytes);
    ASSERT_TRUE(boxes && boxes->size() == 2);
    EXPECT_EQ((*boxes)[0].type, fourCC("abcd"));
    EXPECT_EQ(Bytes((*boxes)[0].content.begin(), (*boxes)[0].content.end()), Bytes{7});
    EXPECT_TRUE((*boxes)[1].content.empty());
}

TEST(Box, aSizeOfZeroReachesToTheEnd) {
    const auto boxes = boxesIn(Bytes{0, 0, 0, 0, 'a', 'b', 'c', 'd', 1, 2, 3});
    ASSERT_TRUE(boxes && boxes->size() == 1);
    EXPECT_EQ(boxes->front().content.size(), 3u);
}

TEST(Box, aSizeOfOneIsFollowedByALongSize) {
    const Bytes bytes = joined({u32(1), u32(fourCC("abcd")), u32(0), u32(18), u8(5), u8(6)});
    const auto boxes = boxesIn(bytes);
    ASSERT_TRUE(boxes && boxes->size() == 1);
    EXPECT_EQ(boxes->front().content.size(), 2u);
}

TEST(Box, aSizeBeyondTheEndOrBelowTheHeaderIsDamage) {
    EXPECT_FALSE(boxesIn(Bytes{0, 0, 0, 9, 'a', 'b', 'c', 'd'}));
    EXPECT_FALSE(boxesIn(Bytes{0, 0, 0, 7, 'a', 'b', 'c', 'd'}));
    EXPECT_FALSE(boxesIn(Bytes{0, 0, 0}));
    EXPECT_FALSE(boxesIn(joined({u32(1), u32(fourCC("abcd")), u32(0xFFFFFFFF), u32(0xFFFFFFFF)})));
}

TEST(Box, tooManyBoxesAreDamage) {
    Bytes bytes;
    for (int i = 0; i < 65537; ++i)
        bytes.insert(bytes.end(), {0, 0, 0, 8, 'f', 'r', 'e', 'e'});
    EXPECT_FALSE(boxesIn(bytes));
    bytes.resize(bytes.size() - 8);
    EXPECT_TRUE(boxesIn(bytes));
}

TEST(Box, theFirstBoxOfATypeIsFound) {
    const Bytes bytes = joined({box("free", {}), box("abcd", {u8(1)}), box("abcd", {u8(2)})});
    const auto boxes = boxesIn(bytes);
    ASSERT_TRUE(boxes);
    EXPECT_EQ(contentOf(*boxes, fourCC("abcd"))->front(), 1);
    EXPECT_EQ(contentOf(*boxes, fourCC("none")).has_value(), false);
}

TEST(Box, aCursorReadsZerosAfterTheEnd) {
    const Bytes bytes{1, 2, 3};
    Cursor cursor(bytes);
    EXPECT_EQ(cursor.u16(), 0x0102);
    EXPECT_TRUE(cursor.isSound());
    EXPECT_EQ(cursor.u16(), 0);
    EXPECT_FALSE(cursor.isSound());
    EXPECT_TRUE(cursor.rest().empty());
    EXPECT_EQ(cursor.u8(), 0);
}

TEST(Box, unprintableCharactersOfANameAreReplaced) { EXPECT_EQ(nameOf(0x61620A7F), "ab??"); }

} // namespace kestrine
