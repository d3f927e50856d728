#include "platform/foundation/archiving/TypedStreamReader.h"

#include "platform/foundation/archiving/TypedStreamFormat.h"
#include "tests/platform/foundation/archiving/ArchiveBytes.h"

#include <gtest/gtest.h>
#include <iomanip>
#include <sstream>

namespace kestrine {
namespace {

using namespace testing;

/// A value as text: its code, a colon, and the content; objects and classes by position and name.
std::string textOf(const TypedValue& value, const TypedStream& stream) {
    std::ostringstream text;
    text << value.code << ':' << std::setprecision(17);
    if (const auto* integer = std::get_if<std::int64_t>(&value.content)) {
        value.code == 'Q' ? text << static_cast<std::uint64_t>(*integer) : text << *integer;
    } else if (const auto* number = std::get_if<double>(&value.content)) {
        text << *number;
    } else if (const auto* string = std::get_if<std::string_view>(&value.content)) {
        text << *string;
    } else if (const auto* bytes = std::get_if<ByteView>(&value.content)) {
        text << toHex(*bytes);
    } else if (const auto* object = std::get_if<ObjectIndex>(&value.content)) {
        text << object->position;
    } else if (const auto* itsClass = std::get_if<ClassIndex>(&value.content)) {
        text << stream.classes[itsClass->position].name;
    } else {
        text << "nil";
    }
    return text.str();
}

/// The values of the root object, or of another one, separated by spaces.
std::string valuesOf(const Bytes& archive, std::size_t position = 0) {
    const Result<TypedStream> stream = readTypedStream(archive);
    if (!stream) {
        return stream.failure().text;
    }
    std::string text;
    for (const TypedValue& value : stream->objects[position].values) {
        text += (text.empty() ? "" : " ") + textOf(value, *stream);
    }
    return text;
}

struct Row {
    std::string groups;
    std::string_view values;
};

TEST(TypedStreamReader, everyTypeCodeIsRead) {
    const Row rows[] = {
        {newType("c") + "84", "c:-124"},
        {newType("C") + "84", "C:132"},
        {newType("B") + "01", "B:1"},
        {newType("s") + "ff", "s:-1"},
        {newType("S") + "ff", "S:65535"},
        {newType("i") + "ff", "i:-1"},
        {newType("I") + "ff", "I:4294967295"},
        {newType("l") + "ff", "l:-1"},
        {newType("L") + "ff", "L:4294967295"},
        {newType("q") + "ff", "q:-1"},
        {newType("Q") + "ff", "Q:18446744073709551615"},
        {newType("f") + "83 00007a42", "f:62.5"},
        {newType("d") + "83 0000000000404f40", "d:62.5"},
        {newType("@") + "85", "@:nil"},
        {newType("#") + "93 94 85", "#:A #:nil"},
        {newType("*") + "84 84 03 616263", "*:abc"},
        {newType("*") + "85", "*:nil"},
        {newType(":") + "84 03 616263", "::abc"},
        {newType(":") + "93", "::A"},
        {newType("%") + "85", "%:nil"},
        {newType("+") + "03 570062", "+:570062"},
        {newType("+") + "85", "+:nil"},
        {newType("!"), ""},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(valuesOf(archiveOfValues(row.groups)), row.values) << row.groups;
    }
}

TEST(TypedStreamReader, everyFormOfAnIntegerIsRead) {
    const Row rows[] = {
        {newType("i") + "00", "i:0"},
        {newType("i") + "7f", "i:127"},
        {newType("i") + "92", "i:-110"},
        {newType("i") + "81 0080", "i:-32768"},
        {newType("i") + "81 0500", "i:5"},
        {newType("i") + "82 00000080", "i:-2147483648"},
        {newType("s") + "82 05000000", "s:5"},
        {newType("S") + "82 409c0000", "S:40000"},
        {newType("S") + "81 409c", "S:40000"},
        {newType("I") + "82 ffffffff", "I:4294967295"},
        {newType("q") + "87 0000000000000080", "q:-9223372036854775808"},
        {newType("Q") + "87 feffffffffffffff", "Q:18446744073709551614"},
        {newType("i") + "87 0500000000000000", "i:5"},
        {newType("f") + "46", "f:70"},
        {newType("f") + "81 b004", "f:1200"},
        {newType("d") + "82 ffffff7f", "d:2147483647"},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(valuesOf(archiveOfValues(row.groups)), row.values) << row.groups;
    }
}

TEST(TypedStreamReader, theSignatureSetsTheByteOrder) {
    const Row rows[] = {
        {newType("i") + "81 04b0", "i:1200"},
        {newType("i") + "82 7ffffffe", "i:2147483646"},
        {newType("q") + "87 0102030405060708", "q:72623859790382856"},
        {newType("f") + "83 427a0000", "f:62.5"},
        {newType("d") + "83 404f400000000000", "d:62.5"},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(valuesOf(archiveOfValues(row.groups, bigHeader)), row.values) << row.groups;
    }
}

TEST(TypedStreamReader, structuresAndArraysAreReplacedByTheirMembers) {
    const Row rows[] = {
        {newType("iI") + "01 02", "i:1 I:2"},
        {newType("[3c]") + "010203", "[:010203"},
        {newType("[2C]") + "8586", "[:8586"},
        {newType("[0c]"), "[:"},
        {newType("[2B]") + "0100", "B:1 B:0"},
        {newType("[2i]") + "05 810600", "i:5 i:6"},
        {newType("[0i]"), ""},
        {newType("[2cf]") + "01 02 03 04", "c:1 f:2 c:3 f:4"},
        {newType("{_NSRange=II}") + "02 03", "I:2 I:3"},
        {newType("{ff}") + "02 03", "f:2 f:3"},
        {newType("[2{a=c!{}[2c]}]") + "01 0203 04 0506", "c:1 [:0203 c:4 [:0506"},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(valuesOf(archiveOfValues(row.groups)), row.values) << row.groups;
    }
}

TEST(TypedStreamReader, objectsClassesAndCStringsShareOneNumbering) {
    // Objects 0 (A), 4 (B, whose class and superclass are 5 and 6); C strings 2 and 3; then one of each
    // again.
    const std::string groups = newType("*") + "84 84 01 78" + "94 84 84 01 79" + "92 84" + newClass("B")
                               + newRootClass() + "86" + "94 95 92 96 92 84 97 86" + newType("#")
                               + "98 99 93";
    EXPECT_EQ(valuesOf(archiveOfValues(groups)), "*:x *:y @:1 *:y @:1 @:2 #:NSObject #:A");
}

TEST(TypedStreamReader, aReferenceMayHaveAnyFormAndAnyNumber) {
    // 240 C strings take the numbers 2 to 241; the references 00, 7f and 81 80 00 are numbers 110, 237 and
    // 238.
    std::string groups = newType("*");
    for (int i = 0; i < 240; ++i) {
        const std::string text = std::to_string(1000 + i);
        groups += (i == 0 ? "" : "94") + ("84" + newType(text));
    }
    const Bytes archive = archiveOfValues(groups + "94 00 94 7f 94 81 8000 94 82 80000000");
    const std::string values = valuesOf(archive);
    EXPECT_EQ(values.substr(values.size() - 28), " *:1108 *:1235 *:1236 *:1236") << values;
}

TEST(TypedStreamReader, typeStringsAndNamesShareOneTable) {
    // The class and, by reference, the selector are called "A". "i" is used as type and as string.
    EXPECT_EQ(valuesOf(archiveOfValues(newType("i") + "05" + newType(":") + "93 95 94 94 06")),
              "i:5 ::A ::i i:6");
}

TEST(TypedStreamReader, theChainOfSuperclassesIsKept) {
    const Bytes bytes = fromHex(twoPresets);
    const Result<TypedStream> stream = readTypedStream(bytes);
    ASSERT_TRUE(stream.ok());
    ASSERT_EQ(stream->classes.size(), 5u);
    std::string chain;
    for (std::optional<ClassIndex> each = stream->objects[0].itsClass; each;) {
        const TypedClass& found = stream->classes[each->position];
        chain += std::string(found.name) + " " + std::to_string(found.version) + ";";
        each = found.superclass;
    }
    EXPECT_EQ(chain, "NSMutableArray 0;NSArray 0;NSObject 0;");
    EXPECT_EQ(stream->classes[3].name, "ResizeSet");
    EXPECT_EQ(stream->classes[3].superclass->position, 2u);
}

TEST(TypedStreamReader, objectsEndAfterTheObjectsInThem) {
    const Bytes bytes = fromHex(twoPresets);
    const Result<TypedStream> stream = readTypedStream(bytes);
    ASSERT_TRUE(stream.ok());
    std::string order;
    for (const ObjectIndex index : stream->finished) {
        order += std::to_string(index.position) + " ";
    }
    EXPECT_EQ(order, "2 1 4 3 0 ");
    EXPECT_EQ(stream->root->position, 0u);
}

TEST(TypedStreamReader, anObjectMayContainItself) { EXPECT_EQ(valuesOf(archiveOfValues("92 92")), "@:0"); }

TEST(TypedStreamReader, aNilRootGivesNoObject) {
    const Bytes bytes = archiveOf("85");
    const Result<TypedStream> stream = readTypedStream(bytes);
    ASSERT_TRUE(stream.ok());
    EXPECT_FALSE(stream->root);
}

TEST(TypedStreamReader, bytesAfterTheRootAreIgnored) {
    Bytes bytes = archiveOfValues(newType("i") + "05");
    bytes.insert(bytes.end(), {0x80, 0x80, 0xff});
    EXPECT_EQ(valuesOf(bytes), "i:5");
}

TEST(TypedStreamReader, anySystemVersionIsAccepted) {
    EXPECT_EQ(valuesOf(archiveOfValues(newType("i") + "05", "04 0b 73747265616d7479706564 07")), "i:5");
}

TEST(TypedStreamReader, theNumberOfValuesWithoutBytesIsLimited) {
    const auto repeated = [](std::size_t count) {
        return archiveOfValues(newType("[" + std::to_string(count) + "!]"));
    };
    EXPECT_TRUE(readTypedStream(repeated(typedstream::valueLimit - 1)).ok());
    const Result<TypedStream> tooMany = readTypedStream(repeated(typedstream::valueLimit));
    ASSERT_FALSE(tooMany.ok());
    EXPECT_EQ(tooMany.failure().reason, Reason::tooLarge);
    EXPECT_FALSE(readTypedStream(archiveOfValues(newType("[4000000000[4000000000{}]]"))).ok());
}

} // namespace
} // namespace kestrine
