#include "commandline/PresetSelection.h"

#include <gtest/gtest.h>

namespace kestrine {

namespace {

std::shared_ptr<const ResizeSet> setNamed(const char16_t* name) {
    const auto set = std::make_shared<ResizeSet>();
    set->setValueForKey(NSString(name).object(), u"name");
    return set;
}

ResizeSets setsNamed(std::initializer_list<const char16_t*> names) {
    ResizeSets sets;
    for (const char16_t* name : names)
        sets.push_back(setNamed(name));
    return sets;
}

const ResizeSets stored = setsNamed({u"Web", u"Thumb", u"Print", u"Mail", u"Icon"});
const NSIndexSet nothing;

std::vector<NSString> vectorOf(std::initializer_list<const char16_t*> arguments) {
    std::vector<NSString> vector = {u"kestrine"};
    vector.insert(vector.end(), arguments.begin(), arguments.end());
    return vector;
}

PresetSelection selected(std::initializer_list<const char16_t*> arguments,
                         const NSIndexSet& selection = nothing) {
    return selectPresets(vectorOf(arguments), stored, selection);
}

std::vector<NSString> files(std::initializer_list<const char16_t*> names) {
    return {names.begin(), names.end()};
}

} // namespace

TEST(PresetSelection, minusLAnywhereListsAndConvertsNothing) {
    const PresetSelection selection = selected({u"a.jpg", u"-l"}, NSIndexSet({{0, 1}}));
    EXPECT_TRUE(selection.listsSets);
    EXPECT_TRUE(selection.sets.empty());
    EXPECT_TRUE(selected({u"-set", u"Web", u"-l", u"b.jpg"}).listsSets);
}

TEST(PresetSelection, onlyTheFilesAfterTheSetsNameAreTaken) {
    const PresetSelection selection = selected({u"x.jpg", u"-set", u"Web", u"y.jpg"});
    EXPECT_FALSE(selection.listsSets);
    EXPECT_EQ(selection.sets, ResizeSets{stored[0]});
    EXPECT_EQ(selection.files, files({u"y.jpg"}));
}

TEST(PresetSelection, namesMatchWholeAndInTheirCase) {
    EXPECT_TRUE(selected({u"-set", u"web", u"a.jpg"}).sets.empty());
    EXPECT_TRUE(selected({u"-set", u"We", u"a.jpg"}).sets.empty());
    EXPECT_TRUE(selected({u"-set", u"", u"a.jpg"}).sets.empty());
}

TEST(PresetSelection, ofTwoSetsWithTheSameNameTheFirstIsApplied) {
    const ResizeSets twins = setsNamed({u"Web", u"Web"});
    EXPECT_EQ(selectPresets(vectorOf({u"-set", u"Web", u"a.jpg"}), twins, nothing).sets,
              ResizeSets{twins[0]});
}

TEST(PresetSelection, aLastMinusSetIsAFileOfTheStoredSelection) {
    const PresetSelection selection = selected({u"a.jpg", u"-set"}, NSIndexSet({{1, 1}}));
    EXPECT_EQ(selection.sets, ResizeSets{stored[1]});
    EXPECT_EQ(selection.files, files({u"a.jpg", u"-set"}));
}

TEST(PresetSelection, aStoredIndexBeyondTheSetsIsSkippedAndTheOthersStillSelect) {
    EXPECT_EQ(selected({u"a.jpg"}, NSIndexSet({{1, 1}, {4, 1}, {7, 1}})).sets,
              (ResizeSets{stored[1], stored[4]}));
    EXPECT_EQ(selected({u"a.jpg"}, NSIndexSet({{3, 4000000000}})).sets, (ResizeSets{stored[3], stored[4]}));
}

TEST(PresetSelection, withoutASelectionNothingIsSelected) {
    EXPECT_TRUE(selected({u"a.jpg"}).sets.empty());
    EXPECT_TRUE(selectPresets({}, {}, nothing).sets.empty());
}

TEST(PresetSelection, theFirstMinusSetCountsAndItsNameMayBeAnything) {
    const PresetSelection selection = selected({u"-set", u"-set", u"a.jpg"});
    EXPECT_TRUE(selection.sets.empty()) << "no set is named -set";
    EXPECT_EQ(selection.files, files({u"a.jpg"}));
}

TEST(PresetSelection, aSetWithoutANameIsNeverFoundByName) {
    const auto nameless = std::make_shared<ResizeSet>();
    nameless->setValueForKey(nullptr, u"name");
    EXPECT_TRUE(selectPresets(vectorOf({u"-set", u"", u"a.jpg"}), {nameless}, nothing).sets.empty());
}

} // namespace kestrine
