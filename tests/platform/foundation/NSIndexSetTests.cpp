#include "platform/foundation/NSIndexSet.h"

#include <gtest/gtest.h>

namespace kestrine {
namespace {

using Ranges = std::vector<NSRange>;

/// All indexes in ascending order.
std::vector<std::size_t> indexesOf(const NSIndexSet& set) {
    std::vector<std::size_t> indexes;
    for (std::size_t index = set.firstIndex(); index != NSNotFound;
         index = set.indexGreaterThanIndex(index)) {
        indexes.push_back(index);
    }
    return indexes;
}

TEST(NSIndexSet, rangesAreSortedAndMerged) {
    const std::pair<Ranges, Ranges> rows[] = {
        {{}, {}},
        {{{3, 0}}, {}},
        {{{5, 1}, {1, 2}}, {{1, 2}, {5, 1}}},
        {{{1, 2}, {3, 2}}, {{1, 4}}},
        {{{1, 10}, {3, 2}, {8, 5}}, {{1, 12}}},
        {{{4, 1}, {4, 1}}, {{4, 1}}},
        {{{0, 1}, {1, 0}, {2, 1}}, {{0, 1}, {2, 1}}},
    };
    for (const auto& [given, expected] : rows) {
        EXPECT_EQ(NSIndexSet(given).ranges(), expected);
    }
}

TEST(NSIndexSet, indexesFromNotFoundOnAreLeftOut) {
    const std::size_t largest = static_cast<std::size_t>(-1);
    EXPECT_EQ(NSIndexSet({{5, largest}}).ranges(), (Ranges{{5, NSNotFound - 5}}));
    EXPECT_EQ(NSIndexSet({{NSNotFound, 1}, {largest, largest}}).ranges(), Ranges{});
    EXPECT_EQ(NSIndexSet({{NSNotFound - 1, 9}}).count(), 1u);
    EXPECT_EQ(NSIndexSet({{0, largest}, {7, largest}}).count(), NSNotFound);
}

TEST(NSIndexSet, indexesAreVisitedInAscendingOrder) {
    EXPECT_EQ(indexesOf(NSIndexSet({{2, 3}, {0, 1}, {9, 1}})), (std::vector<std::size_t>{0, 2, 3, 4, 9}));
    EXPECT_EQ(indexesOf(NSIndexSet()), std::vector<std::size_t>{});
}

TEST(NSIndexSet, theNextIndexExistsForAnyIndex) {
    const NSIndexSet set({{5, 2}, {100, 1}});
    EXPECT_EQ(set.firstIndex(), 5u);
    EXPECT_EQ(set.indexGreaterThanIndex(0), 5u);
    EXPECT_EQ(set.indexGreaterThanIndex(6), 100u);
    EXPECT_EQ(set.indexGreaterThanIndex(50), 100u);
    EXPECT_EQ(set.indexGreaterThanIndex(100), NSNotFound);
    EXPECT_EQ(set.indexGreaterThanIndex(NSNotFound), NSNotFound);
    EXPECT_EQ(set.indexGreaterThanIndex(static_cast<std::size_t>(-1)), NSNotFound);
}

TEST(NSIndexSet, countAndMembershipWorkWithHugeRanges) {
    const NSIndexSet set({{4294967295, 4294967295}, {1, 1}});
    EXPECT_EQ(set.count(), 4294967296u);
    EXPECT_TRUE(set.containsIndex(1));
    EXPECT_FALSE(set.containsIndex(0));
    EXPECT_FALSE(set.containsIndex(2));
    EXPECT_FALSE(set.containsIndex(4294967294));
    EXPECT_TRUE(set.containsIndex(4294967295));
    EXPECT_TRUE(set.containsIndex(8589934589));
    EXPECT_FALSE(set.containsIndex(8589934590));
}

} // namespace
} // namespace kestrine
