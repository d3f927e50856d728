// Archives of the platform's own classes: bytes, shared objects and failures.
#include "platform/foundation/NSCollections.h"
#include "platform/foundation/NSNumber.h"
#include "platform/foundation/archiving/NSArchiver.h"
#include "platform/foundation/archiving/NSNull.h"
#include "platform/foundation/archiving/TypedStreamFormat.h"
#include "tests/platform/foundation/archiving/ArchiveBytes.h"

#include <gtest/gtest.h>

namespace kestrine {
namespace {

using namespace testing;

Object stringObject(const char16_t* text) { return NSString(text).object(); }
template <class T>
Object number(T value) {
    return std::make_shared<const NSNumber>(value);
}
std::shared_ptr<const NSArray> array(std::vector<Object> elements) {
    return std::make_shared<const NSArray>(std::move(elements));
}

/// The hexadecimal archive after the header and the type of the root, or the text of the failure.
std::string archived(const Object& root) {
    const auto data = NSArchiver::archivedDataWithRootObject(root);
    return data ? toHex((*data)->bytes()).substr(toHex(archiveOf("")).size()) : data.failure().text;
}

/// The object in the hexadecimal archive `root`; nil if it is not a T.
template <class T>
std::shared_ptr<const T> unarchived(std::string_view root) {
    const Result<Object> object = NSUnarchiver::unarchiveObjectWithData(archiveOf(root));
    return object ? std::dynamic_pointer_cast<const T>(*object) : nullptr;
}

OptionalString unarchivedString(std::string_view root) {
    const Result<Object> object = NSUnarchiver::unarchiveObjectWithData(archiveOf(root));
    return object ? NSString::fromObject(*object) : std::nullopt;
}

std::string plain(std::string hex) {
    std::erase(hex, ' ');
    return hex;
}

TEST(FoundationArchive, eachClassHasThePlatformsBytes) {
    const std::string root = newRootClass();
    const std::pair<Object, std::string> rows[] = {
        {stringObject(u"h\u00e9"), "84" + newClass("NSString", "01") + root + newType("+") + "0368c3a986"},
        {array({}), "84" + newClass("NSArray") + root + newType("i") + "0086"},
        {array({number(std::int32_t{5})}), "84" + newClass("NSArray") + root + newType("i") + "01 92 84"
                                               + newClass("NSNumber") + newClass("NSValue") + "94"
                                               + newType("*") + "84 95 95 05 86 86"},
        {std::make_shared<NSDictionary>(std::map<NSString, Object>{{u"a", stringObject(u"b")}}),
         "84" + newClass("NSDictionary") + root + newType("i") + "01 92 84" + newClass("NSString", "01")
             + "94" + newType("+") + "01 61 86 92 84 96 97 01 62 86 86"},
        {std::make_shared<NSData>(Bytes{1, 0x86}),
         "84" + newClass("NSData") + root + newType("i") + "02" + newType("[2c]") + "01 86 86"},
        {std::make_shared<NSData>(Bytes{}),
         "84" + newClass("NSData") + root + newType("i") + "00" + newType("[0c]") + "86"},
        {std::make_shared<NSNull>(), "84" + newClass("NSNull") + root + "86"},
    };
    for (const auto& [object, expected] : rows) {
        EXPECT_EQ(archived(object), plain(expected));
    }
}

TEST(FoundationArchive, mutableClassesAreReadAsImmutableOnes) {
    const std::string root = newRootClass();
    EXPECT_EQ(unarchivedString("84" + newClass("NSMutableString", "01") + newClass("NSString", "01") + root
                               + newType("+") + "02 6162 86"),
              NSString(u"ab"));
    const auto list = unarchived<NSArray>("84" + newClass("NSMutableArray") + newClass("NSArray") + root
                                          + newType("i") + "01 92 84" + newClass("NSNull") + "95 86 86");
    ASSERT_NE(list, nullptr);
    EXPECT_NE(dynamic_cast<const NSNull*>(list->elements().at(0).get()), nullptr);
    const auto data = unarchived<NSData>("84" + newClass("NSMutableData") + newClass("NSData") + root
                                         + newType("i") + "02" + newType("[2c]") + "0102 86");
    ASSERT_NE(data, nullptr);
    EXPECT_EQ(data->bytes(), (Bytes{1, 2}));
    const auto dictionary = unarchived<NSDictionary>(
        "84" + newClass("NSMutableDictionary") + newClass("NSDictionary") + root + newType("i") + "00 86");
    ASSERT_NE(dictionary, nullptr);
    EXPECT_TRUE(dictionary->entries().empty());
}

TEST(FoundationArchive, stringsThatAreNotUTF8KeepTheirBytes) {
    const auto string = unarchivedString("84" + newClass("NSString", "01") + newRootClass() + newType("+")
                                         + "04 61 ff c3 62 86");
    ASSERT_TRUE(string.has_value());
    EXPECT_EQ(string->utf8(), "a\xff\xc3"
                              "b");
    EXPECT_EQ(archived(string->object()),
              plain("84" + newClass("NSString", "01") + newRootClass() + newType("+") + "04 61 ff c3 62 86"));
}

TEST(FoundationArchive, numbersKeepTheirType) {
    const NSNumber::Value values[] = {std::int8_t{-5},
                                      std::uint8_t{250},
                                      std::int16_t{-30000},
                                      std::uint16_t{60000},
                                      std::int32_t{-2000000},
                                      std::uint32_t{4000000000},
                                      std::int64_t{1} << 40,
                                      ~std::uint64_t{0},
                                      62.5F,
                                      0.1,
                                      std::int8_t{-122}};
    for (const NSNumber::Value& value : values) {
        const auto read = unarchived<NSNumber>(archived(std::make_shared<NSNumber>(value)));
        ASSERT_NE(read, nullptr) << value.index();
        EXPECT_EQ(read->value(), value) << value.index();
    }
}

TEST(FoundationArchive, aBooleanIsStoredAsASignedByte) {
    EXPECT_EQ(archived(number(true)), archived(number(std::int8_t{1})));
    const auto read = unarchived<NSNumber>("84" + newClass("NSNumber") + newClass("NSValue") + newRootClass()
                                           + newType("*") + "84" + newType("B") + "97 01 86");
    ASSERT_NE(read, nullptr);
    EXPECT_EQ(read->value(), NSNumber::Value(true));
}

TEST(FoundationArchive, aNumberOfAnotherTypeThanStatedFails) {
    const std::string start =
        "84" + newClass("NSNumber") + newClass("NSValue") + newRootClass() + newType("*");
    EXPECT_NE(unarchived<NSNumber>(start + "84" + newType("i") + "97 05 86"), nullptr);
    for (const std::string& groups :
         {std::string("85"), "84" + newType("i"), "84" + newType("i") + newType("c") + "05",
          "84" + newType("ii") + "97 05 06", "84" + newType("i") + "97 05 97 06",
          "84" + newType("@") + "92 85", "84" + newType("{_NSRange=II}") + "97 05 06"}) {
        EXPECT_EQ(unarchived<NSNumber>(start + groups + "86"), nullptr) << groups;
    }
}

TEST(FoundationArchive, objectsAreSharedByIdentityNotByEquality) {
    const Object shared = stringObject(u"a");
    const auto data = NSArchiver::archivedDataWithRootObject(array({shared, stringObject(u"a"), shared}));
    ASSERT_TRUE(data.ok());
    const Result<Object> read = NSUnarchiver::unarchiveObjectWithData((*data)->bytes());
    ASSERT_TRUE(read.ok());
    const auto& elements = dynamic_cast<const NSArray&>(**read).elements();
    ASSERT_EQ(elements.size(), 3u);
    EXPECT_EQ(elements[0], elements[2]);
    EXPECT_NE(elements[0], elements[1]);
    EXPECT_EQ(NSString::fromObject(elements[1]), NSString(u"a"));
}

TEST(FoundationArchive, aDictionaryKeepsItsEntries) {
    const auto dictionary = std::make_shared<NSDictionary>(
        std::map<NSString, Object>{{u"one", number(std::int32_t{1})}, {u"two", stringObject(u"zwei")}});
    const auto read = unarchived<NSDictionary>(archived(dictionary));
    ASSERT_NE(read, nullptr);
    EXPECT_EQ(read->entries().size(), 2u);
    EXPECT_EQ(dynamic_cast<const NSNumber&>(*read->objectForKey(u"one")).intValue(), 1);
    EXPECT_EQ(NSString::fromObject(read->objectForKey(u"two")), NSString(u"zwei"));
}

TEST(FoundationArchive, aDictionaryNeedsStringsAsKeysAndNoNilValues) {
    // Objects: 0 the dictionary, 1 its class, 2 the root class.
    const std::string start = "84" + newClass("NSDictionary") + newRootClass() + newType("i") + "01";
    const std::string null = "92 84" + newClass("NSNull") + "94 86";
    const std::string text = "92 84" + newClass("NSString", "01") + "94" + newType("+") + "00 86";
    EXPECT_NE(unarchived<NSDictionary>(start + text + null + "86"), nullptr);
    EXPECT_EQ(unarchived<NSDictionary>(start + null + text + "86"), nullptr);
    EXPECT_EQ(unarchived<NSDictionary>(start + "92 85" + null + "86"), nullptr);
    EXPECT_EQ(unarchived<NSDictionary>(start + text + "92 85 86"), nullptr);
    EXPECT_EQ(unarchived<NSDictionary>(start + text + "86"), nullptr);
}

TEST(FoundationArchive, ifAKeyOccursTwiceTheLastValueCounts) {
    // Objects: 3 is the string, 5 is the null. The string occurs again with itself as value.
    const auto dictionary =
        unarchived<NSDictionary>("84" + newClass("NSDictionary") + newRootClass() + newType("i") + "02 92 84"
                                 + newClass("NSString", "01") + "94" + newType("+") + "00 86 92 84"
                                 + newClass("NSNull") + "94 86 92 95 92 95 86");
    ASSERT_NE(dictionary, nullptr);
    ASSERT_EQ(dictionary->entries().size(), 1u);
    EXPECT_EQ(NSString::fromObject(dictionary->objectForKey(u"")), NSString(u""));
}

TEST(FoundationArchive, dataOfAnotherLengthThanStatedFails) {
    for (const std::string& groups :
         {newType("i") + "03" + newType("[2c]") + "0102", newType("i") + "ff" + newType("[2c]") + "0102",
          newType("i") + "00", newType("i") + "02" + newType("[2i]") + "0102", newType("[2c]") + "0102"}) {
        EXPECT_EQ(unarchived<NSData>("84" + newClass("NSData") + newRootClass() + groups + "86"), nullptr)
            << groups;
    }
}

/// `depth` nested arrays.
Object nestedArrays(std::size_t depth) {
    Object object;
    for (std::size_t i = 0; i < depth; ++i) {
        object = array(object == nullptr ? std::vector<Object>{} : std::vector<Object>{object});
    }
    return object;
}

TEST(FoundationArchive, objectsNestedTooDeeplyForReadingAreNotWritten) {
    EXPECT_NE(unarchived<NSArray>(archived(nestedArrays(typedstream::depthLimit))), nullptr);
    const auto data = NSArchiver::archivedDataWithRootObject(nestedArrays(typedstream::depthLimit + 1));
    ASSERT_FALSE(data.ok());
    EXPECT_EQ(data.failure().reason, Reason::tooLarge);
}

TEST(FoundationArchive, aSubstituteClassMustBeKnown) {
    NSArchiver archiver;
    archiver.encodeClassName("NSArray", "NSFancyArray");
    EXPECT_FALSE(archiver.archivedData(array({})).ok());
}

TEST(FoundationArchive, aNilRootIsWrittenAndFailsOnReading) {
    EXPECT_EQ(archived(nullptr), "85");
    const Result<Object> object = NSUnarchiver::unarchiveObjectWithData(archiveOf("85"));
    ASSERT_FALSE(object.ok());
    EXPECT_EQ(object.failure().reason, Reason::empty);
}

} // namespace
} // namespace kestrine
