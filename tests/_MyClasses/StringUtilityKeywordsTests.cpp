#include "_MyClasses/Category/StringUtility.h"
#include "platform/foundation/NSException.h"
#include "tests/_MyClasses/StringUtilityTables.h"

#include <gmock/gmock.h>

namespace kestrine {
namespace {

using namespace StringUtility;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class StringUtilityKeywords : public testing::TextTables {};

std::vector<std::int32_t> days(const NSString& list, NSBundle& bundle) {
    std::vector<std::int32_t> values;
    for (const NSNumber& number : separateDateKeyToArray(list, bundle))
        values.push_back(number.intValue());
    return values;
}

std::vector<Object> keys(std::initializer_list<const char16_t*> texts) {
    std::vector<Object> result;
    for (const char16_t* text : texts)
        result.push_back(NSString(text).object());
    return result;
}

TEST_F(StringUtilityKeywords, hasAnyKeyIgnoresCaseAndStringHasAnyKeyDoesNot) {
    EXPECT_TRUE(hasAnyKey(u"xabcx", keys({u"ABC"})));
    EXPECT_FALSE(stringHasAnyKey(u"xabcx", {u"ABC"}));
    EXPECT_TRUE(stringHasAnyKey(u"xABCx", {u"no", u"ABC"}));
}

TEST_F(StringUtilityKeywords, emptyKeysAndAnEmptyReceiverNeverMatch) {
    EXPECT_FALSE(hasAnyKey(u"abc", keys({u"", u"x"})));
    EXPECT_FALSE(stringHasAnyKey(u"abc", {u"", u"x"}));
    EXPECT_FALSE(hasAnyKey(u"", keys({u"a"})));
    EXPECT_FALSE(hasAnyKey(u"abc", {}));
}

TEST_F(StringUtilityKeywords, aNumberIsAKey) {
    EXPECT_TRUE(hasAnyKey(u"year 2008", {std::make_shared<NSNumber>(2008)}));
    EXPECT_FALSE(hasAnyKey(u"year 2008", {std::make_shared<NSNumber>(2009)}));
}

TEST_F(StringUtilityKeywords, theSearchStopsAtTheFirstHitAndRaisesAtAKeyOfAnotherKind) {
    const Object list = std::make_shared<NSArray>();
    EXPECT_TRUE(hasAnyKey(u"abc", {NSString(u"a").object(), list}));
    EXPECT_THROW(hasAnyKey(u"abc", {NSString(u"x").object(), list}), NSException);
    EXPECT_THROW(hasAnyKey(u"abc", {nullptr}), NSException);
    EXPECT_FALSE(hasAnyKey(u"", {list})) << "the keys of an empty receiver are not examined";
}

TEST_F(StringUtilityKeywords, searchOptionsSelectCaseAndPosition) {
    struct Case {
        const char16_t* key;
        unsigned options;
        bool isFound;
    };
    const Case cases[] = {{u"BC", 0, false},   {u"bc", 0, true},  {u"BC", 1, true},   {u"bc", 2, true},
                          {u"bc", 4, true},    {u"bc", 8, false}, {u"ab", 8, true},   {u"AB", 8, false},
                          {u"AB", 9, true},    {u"cd", 12, true}, {u"ab", 12, false}, {u"CD", 13, true},
                          {u"abcde", 8, false}};
    for (const Case& c : cases)
        EXPECT_EQ(hasAnyKey(u"abcd", keys({c.key}), c.options), c.isFound)
            << NSString(c.key).utf8() << " " << c.options;
}

TEST_F(StringUtilityKeywords, anAnchoredKeyDoesNotMatchHalfACharacter) {
    const NSString low = std::u16string{0xde00};
    EXPECT_FALSE(hasAnyKey(u"a\U0001f600", {low.object()}, 13));
    EXPECT_TRUE(hasAnyKey(u"a\U0001f600", {NSString(u"\U0001f600").object()}, 13));
}

TEST_F(StringUtilityKeywords, stringHasAllKeysIsTrueWithoutNonEmptyKeys) {
    EXPECT_TRUE(stringHasAllKeys(u"abc", {}));
    EXPECT_TRUE(stringHasAllKeys(u"abc", {u"", u""}));
    EXPECT_TRUE(stringHasAllKeys(u"", {u""}));
}

TEST_F(StringUtilityKeywords, stringHasAllKeysNeedsEachKeyInItsCase) {
    EXPECT_TRUE(stringHasAllKeys(u"red blue", {u"blue", u"", u"red"}));
    EXPECT_FALSE(stringHasAllKeys(u"red blue", {u"blue", u"Red"}));
    EXPECT_FALSE(stringHasAllKeys(u"", {u"a"}));
}

TEST_F(StringUtilityKeywords, quotedPhrasesComeFirstAndDoubledBlanksGiveEmptyWords) {
    EXPECT_THAT(separateStringKeyToArray(u"red \"dark blue\" green", withoutTable()),
                ElementsAre(u"dark blue", u"red", u"", u"green"));
}

TEST_F(StringUtilityKeywords, searchStringsAreSeparatedAsListed) {
    NSBundle& bundle = withoutTable();
    EXPECT_THAT(separateStringKeyToArray(u"", bundle), IsEmpty());
    EXPECT_THAT(separateStringKeyToArray(u"\"\"", bundle), IsEmpty());
    EXPECT_THAT(separateStringKeyToArray(u"\"a b\"", bundle), ElementsAre(u"a b"));
    EXPECT_THAT(separateStringKeyToArray(u"a\"b", bundle), ElementsAre(u"ab"));
    EXPECT_THAT(separateStringKeyToArray(u"a,b c", bundle), ElementsAre(u"a", u"b", u"c"));
    EXPECT_THAT(separateStringKeyToArray(u" ", bundle), ElementsAre(u"", u""));
    EXPECT_THAT(separateStringKeyToArray(u"\"x\" \"y\"\"x\"", bundle), ElementsAre(u"x", u"y", u"", u""));
}

TEST_F(StringUtilityKeywords, adjacentQuotesStopTheSearchForPhrases) {
    EXPECT_THAT(separateStringKeyToArray(u"\"\"\"a b\"", withoutTable()), ElementsAre(u"a", u"b"));
}

TEST_F(StringUtilityKeywords, localizedStringsSeparateWords) {
    NSBundle& bundle = given("\"Space Character\" = \"_\"; \"Kuten Character\" = \"||\";");
    EXPECT_THAT(separateStringKeyToArray(u"a_b||c|d", bundle), ElementsAre(u"a", u"b", u"c|d"));
}

TEST_F(StringUtilityKeywords, anEmptyLocalizedStringSeparatesNothing) {
    NSBundle& bundle = given("\"Space Character\" = \"\"; \"Kuten Character\" = \"\";");
    EXPECT_THAT(separateStringKeyToArray(u"ab c", bundle), ElementsAre(u"ab", u"c"));
}

TEST_F(StringUtilityKeywords, aMissingLocalizedStringIsReplacedByItsKey) {
    EXPECT_THAT(separateStringKeyToArray(u"aSpace,Characterb", withoutTable()),
                ElementsAre(u"aSpace", u"Characterb"));
    EXPECT_EQ(days(u"1Minus Character3", withoutTable()), (std::vector<std::int32_t>{1, 0}))
        << "the key's blank is a comma by then";
}

TEST_F(StringUtilityKeywords, shippedTablesSeparateAtFullWidthCharacters) {
    for (const char* language : {"en_US.UTF-8", "ja_JP.UTF-8"}) {
        NSBundle& bundle = shipped(language);
        EXPECT_THAT(separateStringKeyToArray(u"赤　青。緑 黒", bundle),
                    ElementsAre(u"赤", u"青", u"緑", u"黒"));
        EXPECT_EQ(days(u"1－3。5～6　9", bundle), (std::vector<std::int32_t>{1, 2, 3, 5, 6, 9}));
    }
}

TEST_F(StringUtilityKeywords, aPredicateRequiresEveryNonEmptyWord) {
    const NSPredicate predicate =
        andPredicateForAttribute(u"red \"dark blue\"  green", u"name", withoutTable());
    EXPECT_EQ(predicate.predicateFormat(),
              NSString(u"name CONTAINS \"dark blue\" AND name CONTAINS \"red\" AND name CONTAINS \"green\""));
    EXPECT_TRUE(predicate.evaluateWithObject(
        NSDictionary({{u"name", NSString(u"green and red on dark blue").object()}})));
    EXPECT_FALSE(predicate.evaluateWithObject(NSDictionary({{u"name", NSString(u"green red").object()}})));
}

TEST_F(StringUtilityKeywords, withoutWordsThePredicateIsAlwaysTrue) {
    EXPECT_EQ(andPredicateForAttribute(u" , ", u"name", withoutTable()).predicateFormat(),
              NSString(u"TRUEPREDICATE"));
}

TEST_F(StringUtilityKeywords, aDayListBecomesItsNumbers) {
    struct Case {
        const char16_t* list;
        std::vector<std::int32_t> numbers;
    };
    const Case cases[] = {
        {u"", {}},
        {u"1-3,7", {1, 2, 3, 7}},
        {u"28-40", {28, 29, 30, 31}},
        {u"5-", {5}},
        {u"40", {40}},
        {u"-3", {0, 1, 2, 3}},
        {u"-", {0}},
        {u"3-1", {}},
        {u"3--", {}},
        {u"1-9-3", {1, 2, 3}},
        {u"32-40", {}},
        {u"7,7 7", {7, 7, 7}},
        {u"1,,x", {1, 0, 0}},
        {u" 2", {0, 2}},
        {u"12th,\t+4,\r5", {12, 4, 5}},
        {u"99999999999", {2147483647}},
        {u"30-99999999999", {30, 31}},
    };
    for (const Case& c : cases)
        EXPECT_EQ(days(c.list, withoutTable()), c.numbers) << NSString(c.list).utf8();
}

TEST_F(StringUtilityKeywords, localizedMinusAndTildeMakeRanges) {
    NSBundle& bundle = given("\"Minus Character\" = \"to\"; \"Tilde Character\" = \"~\";");
    EXPECT_EQ(days(u"1to2,4~5", bundle), (std::vector<std::int32_t>{1, 2, 4, 5}));
}

} // namespace
} // namespace kestrine
