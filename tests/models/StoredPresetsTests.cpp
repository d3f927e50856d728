#include "models/StoredPresets.h"

#include "platform/foundation/NSCollections.h"
#include "platform/foundation/NSNumber.h"
#include "tests/support/PresetBuilder.h"

#include <gtest/gtest.h>

namespace kestrine {

using testing::makeSet;

namespace {

PropertyList domainWith(const NSString& key, const Object& root) {
    NSArchiver archiver(archivedSetClasses());
    PropertyList domain = PropertyList::empty();
    domain.setData(key, (*archiver.archivedData(root))->bytes());
    return domain;
}

Result<ResizeSets> setsIn(std::vector<Object> elements) {
    return storedSets(domainWith(resizeSetsKey, std::make_shared<NSArray>(std::move(elements))));
}

template <class T>
std::optional<Reason> reasonOf(const Result<T>& result) {
    return result ? std::nullopt : std::optional(result.failure().reason);
}

} // namespace

TEST(StoredPresets, setsAreReadInTheirOrder) {
    const Result<ResizeSets> sets = setsIn({makeSet(u"A"), makeSet(u"B")});
    ASSERT_TRUE(sets);
    ASSERT_EQ(sets->size(), 2U);
    EXPECT_EQ((*sets)[0]->name(), NSString(u"A"));
    EXPECT_EQ((*sets)[1]->name(), NSString(u"B"));
}

TEST(StoredPresets, aListWithAnythingOtherThanSetsIsRefusedAsAWhole) {
    EXPECT_EQ(reasonOf(setsIn({makeSet(u"A"), NSString(u"B").object()})), Reason::malformed);
    EXPECT_EQ(reasonOf(setsIn({NSString(u"A").object(), makeSet(u"B")})), Reason::malformed);
    EXPECT_EQ(reasonOf(setsIn({makeSet(u"A"), std::make_shared<NSArray>(std::vector<Object>{})})),
              Reason::malformed);
}

TEST(StoredPresets, aValueThatIsNotAListIsRefused) {
    EXPECT_EQ(reasonOf(storedSets(domainWith(resizeSetsKey, makeSet(u"A")))), Reason::malformed);
    PropertyList domain = PropertyList::empty();
    domain.setData(resizeSetsKey, Bytes{1, 2, 3});
    EXPECT_FALSE(storedSets(domain));
}

TEST(StoredPresets, withoutStoredSetsTheListIsEmptyAndNothingIsSelected) {
    const Result<ResizeSets> sets = storedSets(PropertyList::empty());
    EXPECT_TRUE(sets && sets->empty());
    const auto selection = storedSelection(PropertyList::empty());
    EXPECT_TRUE(selection && (*selection)->firstIndex() == NSIndexSet().firstIndex());
}

TEST(StoredPresets, theSelectionIsReadAndAnythingElseInItsPlaceIsRefused) {
    const NSIndexSet stored(std::vector<NSRange>{{2, 1}, {5, 2}});
    const auto selection =
        storedSelection(domainWith(selectionIndexesKey, std::make_shared<NSIndexSet>(stored)));
    ASSERT_TRUE(selection);
    EXPECT_EQ((*selection)->firstIndex(), 2U);
    EXPECT_EQ((*selection)->indexGreaterThanIndex(2), 5U);
    EXPECT_EQ(reasonOf(storedSelection(domainWith(selectionIndexesKey, NSString(u"2").object()))),
              Reason::malformed);
}

} // namespace kestrine
