#include "platform/carbon/AEDataModel.h"
#include "platform/carbon/DescriptorData.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace kestrine {
namespace {

using testing::bytesOf;

AEDesc textDescriptor(std::string_view text) { return descriptorOf(typeText, bytesOf(text)); }

Bytes bytesIn(const AEDesc& desc) {
    const ByteView data = dataOf(desc);
    return {data.begin(), data.end()};
}

TEST(AEDesc, isInitiallyANullDescriptorWithoutBytes) {
    const AEDesc desc;
    EXPECT_EQ(desc.descriptorType, typeNull);
    EXPECT_EQ(AEGetDescDataSize(&desc), 0);
}

TEST(AECreateDesc, copiesTheBytes) {
    char text[] = "abc";
    AEDesc desc;
    EXPECT_EQ(AECreateDesc(typeText, text, 3, &desc), noErr);
    text[0] = 'x';
    EXPECT_EQ(desc.descriptorType, typeText);
    EXPECT_EQ(bytesIn(desc), bytesOf("abc"));
}

TEST(AECreateDesc, aTypeCanHaveNoBytes) {
    AEDesc desc;
    EXPECT_EQ(AECreateDesc(typeTrue, nullptr, 0, &desc), noErr);
    EXPECT_EQ(desc.descriptorType, typeTrue);
    EXPECT_EQ(desc.dataHandle, nullptr);
    EXPECT_EQ(AEGetDescDataSize(&desc), 0);
}

TEST(AECreateDesc, refusesMissingArgumentsAndBytesOfTypeNull) {
    AEDesc desc = textDescriptor("before");
    EXPECT_EQ(AECreateDesc(typeText, "a", 1, nullptr), paramErr);
    EXPECT_EQ(AECreateDesc(typeText, nullptr, 1, &desc), paramErr);
    EXPECT_EQ(desc.descriptorType, typeNull);
    EXPECT_EQ(AECreateDesc(typeText, "a", -1, &desc), paramErr);
    EXPECT_EQ(AECreateDesc(typeNull, "a", 1, &desc), paramErr);
}

TEST(AEDisposeDesc, leavesANullDescriptorAndKeepsCopies) {
    AEDesc desc = textDescriptor("abc");
    const AEDesc copy = desc;
    EXPECT_EQ(AEDisposeDesc(&desc), noErr);
    EXPECT_EQ(desc.descriptorType, typeNull);
    EXPECT_EQ(AEDisposeDesc(&desc), noErr);
    EXPECT_EQ(bytesIn(copy), bytesOf("abc"));
}

TEST(AEDisposeDesc, refusesAnInvalidDescriptor) {
    AEDesc impossible{typeNull, std::make_shared<const Bytes>(Bytes{1})};
    EXPECT_EQ(AEDisposeDesc(&impossible), errAENotAEDesc);
    EXPECT_EQ(AEDisposeDesc(nullptr), paramErr);
}

TEST(AECoerceDesc, textKeepsEveryByteInBothDirections) {
    for (const std::string_view text : {"", "plain", "caf\xc3\xa9 \xf0\x9f\x98\x80", "no text: \xff\xe9"}) {
        const AEDesc desc = textDescriptor(text);
        AEDesc unicode;
        AEDesc back;
        ASSERT_EQ(AECoerceDesc(&desc, typeUnicodeText, &unicode), noErr);
        EXPECT_EQ(unicodeTextOf(unicode), NSString::fromUTF8(text));
        ASSERT_EQ(AECoerceDesc(&unicode, typeText, &back), noErr);
        EXPECT_EQ(bytesIn(back), bytesOf(text));
    }
}

TEST(AECoerceDesc, anOddByteAtTheEndOfUnicodeTextIsDropped) {
    const AEDesc desc = descriptorOf(typeUnicodeText, {'a', 0, 'b'});
    EXPECT_EQ(unicodeTextOf(desc).length(), 1u);
}

TEST(AEDesc, aCodeHasExactlyFourBytes) {
    EXPECT_EQ(codeOf(codeDescriptor(typeType, 1234)), 1234u);
    for (const std::size_t size : {0, 3, 5})
        EXPECT_EQ(codeOf(descriptorOf(typeType, Bytes(size, 1))), 0u) << size;
}

TEST(AECoerceDesc, convertsBooleansAndCodes) {
    struct Row {
        AEDesc from;
        DescType type;
        Bytes bytes;
    };
    const Bytes code = bytesIn(codeDescriptor(typeType, 1234));
    for (const Row& row :
         {Row{{typeTrue, nullptr}, typeBoolean, {1}}, Row{{typeFalse, nullptr}, typeBoolean, {0}},
          Row{codeDescriptor(typeEnumerated, 1234), typeType, code},
          Row{codeDescriptor(typeType, 1234), typeEnumerated, code}}) {
        AEDesc made;
        EXPECT_EQ(AECoerceDesc(&row.from, row.type, &made), noErr);
        EXPECT_EQ(made.descriptorType, row.type);
        EXPECT_EQ(bytesIn(made), row.bytes);
    }
}

TEST(AECoerceDesc, everyTypeConvertsToItself) {
    const AEDesc desc = descriptorOf(typePString, {1, 'a'});
    for (const DescType type : {typePString, typeWildCard}) {
        AEDesc made;
        EXPECT_EQ(AECoerceDesc(&desc, type, &made), noErr);
        EXPECT_EQ(made.descriptorType, typePString);
        EXPECT_EQ(bytesIn(made), bytesIn(desc));
    }
}

TEST(AECoerceDesc, failsWithoutAConversion) {
    const AEDesc desc = textDescriptor("12");
    for (const DescType type : {typePString, typeShortInteger, typeAlias, typeNull}) {
        AEDesc made = desc;
        EXPECT_EQ(AECoerceDesc(&desc, type, &made), errAECoercionFail);
        EXPECT_EQ(made.descriptorType, typeNull);
    }
}

TEST(AECoerceDesc, aNullDescriptorStaysANullDescriptor) {
    const AEDesc nothing;
    AEDesc made = textDescriptor("before");
    EXPECT_EQ(AECoerceDesc(&nothing, typeUnicodeText, &made), noErr);
    EXPECT_EQ(made.descriptorType, typeNull);
}

TEST(AECoerceDesc, theResultCanBeTheSource) {
    AEDesc desc = textDescriptor("a");
    EXPECT_EQ(AECoerceDesc(&desc, typeUnicodeText, &desc), noErr);
    EXPECT_EQ(unicodeTextOf(desc), NSString(u"a"));
    EXPECT_EQ(AECoerceDesc(nullptr, typeText, &desc), paramErr);
    EXPECT_EQ(AECoerceDesc(&desc, typeText, nullptr), paramErr);
}

TEST(AEGetDescData, copiesAtMostTheGivenSize) {
    const AEDesc desc = textDescriptor("abc");
    char buffer[5] = "....";
    EXPECT_EQ(AEGetDescData(&desc, buffer, 2), noErr);
    EXPECT_STREQ(buffer, "ab..");
    EXPECT_EQ(AEGetDescData(&desc, buffer, 4), noErr);
    EXPECT_STREQ(buffer, "abc.");
}

TEST(AEGetDescData, needsItsArguments) {
    const AEDesc desc = textDescriptor("abc");
    char byte = 0;
    EXPECT_EQ(AEGetDescData(nullptr, &byte, 1), paramErr);
    EXPECT_EQ(AEGetDescData(&desc, nullptr, 1), paramErr);
    EXPECT_EQ(AEGetDescData(&desc, &byte, -1), paramErr);
    EXPECT_EQ(AEGetDescDataSize(nullptr), 0);
}

} // namespace
} // namespace kestrine
