#include "kestrinectl/compare/CellSums.h"
#include "tests/kestrinectl/compare/TestPlane.h"

#include <gtest/gtest.h>

namespace kestrine {
namespace {

TEST(CellSums, theCellsCoverThePictureToItsEdges) {
    CellSums cells(65, 32);
    EXPECT_EQ(cells.columns, 3U);
    EXPECT_EQ(cells.rows, 1U);
    cells.ofPixel(64, 31) = 7;
    EXPECT_EQ(cells.at(2, 0), 7);
}

TEST(CellSums, sumsOfPicturesOfTheSameSizeAreAdded) {
    CellSums one(64, 64), two(64, 64), all;
    one.at(1, 0) = 2;
    two.at(1, 0) = 3;
    all.add(one);
    all.add(two);
    all.add(CellSums(32, 32)); // of another size
    EXPECT_EQ(all.at(1, 0), 5);
}

TEST(CellSums, detailIsWhereNeighboursDiffer) {
    LumaPlane plane = flatPlane(96, 96, 50);
    plane.samples[40 * 96 + 70] = 80;
    const CellSums detail = detailOf(plane);
    EXPECT_EQ(detail.at(2, 1), 120); // four neighbours
    EXPECT_EQ(detail.at(0, 0), 0);
}

TEST(CellSums, theGreatestSquareLeavesOutWhatIsTaken) {
    CellSums cells(320, 320);
    cells.at(4, 4) = 10;
    cells.at(9, 0) = 5;
    const CellSquare first = greatestSquare(cells, 3);
    EXPECT_TRUE(first.overlaps({4, 4, 1, 1}));
    const CellSquare second = greatestSquare(cells, 3, first);
    EXPECT_TRUE(second.overlaps({9, 0, 1, 1}));
    EXPECT_FALSE(second.overlaps(first));
}

TEST(CellSums, theGreatestSquareOfASmallPictureIsThePicture) {
    const CellSquare whole = greatestSquare(CellSums(40, 20), 8);
    EXPECT_EQ(whole.columns, 2U);
    EXPECT_EQ(whole.rows, 1U);
    EXPECT_EQ(greatestSquare(CellSums(40, 20), 8, whole).column, 0U);
    EXPECT_EQ(greatestSquare({}, 8).columns, 0U);
}

} // namespace
} // namespace kestrine
