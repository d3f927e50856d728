#include "platform/foundation/text/NSPredicate.h"

#include "platform/foundation/NSException.h"
#include "platform/foundation/NSNumber.h"

#include <gtest/gtest.h>

namespace kestrine {
namespace {

NSPredicate contains(const NSString& attribute, const NSString& keyword) {
    return NSPredicate::predicateWithFormat(u"%K contains %@", attribute, keyword);
}

NSPredicate all(std::vector<NSPredicate> predicates) {
    return NSPredicate::andPredicateWithSubpredicates(std::move(predicates));
}

TEST(Predicate, printsItsOperatorInUpperCaseAndItsKeywordInQuotes) {
    EXPECT_EQ(contains(u"name", u"red").predicateFormat(), NSString(u"name CONTAINS \"red\""));
    EXPECT_EQ(contains(u"name", u"a\"b\\c").predicateFormat(), NSString(u"name CONTAINS \"a\\\"b\\\\c\""));
}

TEST(Predicate, printsAReservedWordWithAHash) {
    EXPECT_EQ(contains(u"size", u"x").predicateFormat(), NSString(u"#size CONTAINS \"x\""));
    EXPECT_EQ(contains(u"file.first", u"x").predicateFormat(), NSString(u"file.#first CONTAINS \"x\""));
}

TEST(Predicate, printsConjunctionsOfAnyLength) {
    const NSPredicate a = contains(u"n", u"a");
    const NSPredicate b = contains(u"n", u"b");
    EXPECT_EQ(all({}).predicateFormat(), NSString(u"TRUEPREDICATE"));
    EXPECT_EQ(all({a}).predicateFormat(), a.predicateFormat());
    EXPECT_EQ(all({a, b}).predicateFormat(), NSString(u"n CONTAINS \"a\" AND n CONTAINS \"b\""));
    EXPECT_EQ(all({all({a}), b}).predicateFormat(), all({a, b}).predicateFormat());
    EXPECT_EQ(all({all({a, b}), b}).predicateFormat(),
              NSString(u"(n CONTAINS \"a\" AND n CONTAINS \"b\") AND n CONTAINS \"b\""));
}

TEST(Predicate, anyOtherFormatRaises) {
    EXPECT_NO_THROW(NSPredicate::predicateWithFormat(u"%K CONTAINS %@", u"a", u"b"));
    for (const char16_t* format : {u"", u"%K like %@", u"%k contains %@", u"%K contains"})
        EXPECT_THROW(NSPredicate::predicateWithFormat(format, u"a", u"b"), NSException);
}

TEST(Predicate, aStringContainsTheKeywordCaseSensitively) {
    const NSDictionary record({{u"name", NSString(u"Dark red").object()}});
    EXPECT_TRUE(contains(u"name", u"red").evaluateWithObject(record));
    EXPECT_FALSE(contains(u"name", u"RED").evaluateWithObject(record));
    EXPECT_FALSE(contains(u"name", u"").evaluateWithObject(record));
    EXPECT_FALSE(contains(u"title", u"red").evaluateWithObject(record));
}

TEST(Predicate, anArrayContainsTheKeywordAsAnElement) {
    const Object list = std::make_shared<NSArray>(
        std::vector<Object>{NSString(u"red").object(), std::make_shared<NSNumber>(5)});
    const NSDictionary record({{u"tags", list}});
    EXPECT_TRUE(contains(u"tags", u"red").evaluateWithObject(record));
    EXPECT_FALSE(contains(u"tags", u"re").evaluateWithObject(record));
    EXPECT_FALSE(contains(u"tags", u"5").evaluateWithObject(record));
}

TEST(Predicate, aNumberRaises) {
    const NSDictionary record({{u"count", std::make_shared<NSNumber>(5)}});
    EXPECT_THROW(contains(u"count", u"5").evaluateWithObject(record), NSException);
}

TEST(Predicate, keysSeparatedByDotsReadNestedDictionaries) {
    const Object inner =
        std::make_shared<NSDictionary>(std::map<NSString, Object>{{u"name", NSString(u"red").object()}});
    const NSDictionary record({{u"colour", inner}, {u"text", NSString(u"name").object()}});
    EXPECT_TRUE(contains(u"colour.name", u"ed").evaluateWithObject(record));
    EXPECT_FALSE(contains(u"colour.none", u"ed").evaluateWithObject(record));
    EXPECT_FALSE(contains(u"text.name", u"n").evaluateWithObject(record));
}

TEST(Predicate, aConjunctionIsTrueIfAllPartsAreTrueOrItIsEmpty) {
    const NSDictionary record({{u"n", NSString(u"ab").object()}});
    EXPECT_TRUE(all({}).evaluateWithObject(record));
    EXPECT_TRUE(all({contains(u"n", u"a"), contains(u"n", u"b")}).evaluateWithObject(record));
    EXPECT_FALSE(all({contains(u"n", u"a"), contains(u"n", u"c")}).evaluateWithObject(record));
}

} // namespace
} // namespace kestrine
