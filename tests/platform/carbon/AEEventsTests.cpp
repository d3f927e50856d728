#include "platform/carbon/AEEvents.h"
#include "platform/carbon/DescriptorData.h"
#include "platform/carbon/RecordFields.h"
#include "tests/support/TemporaryFolder.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace kestrine {
namespace {

using testing::bytesOf;

constexpr AEKeyword firstKey = fourCharacterCode("aaaa");
constexpr AEKeyword secondKey = fourCharacterCode("bbbb");

AEDesc textDescriptor(std::string_view text) { return descriptorOf(typeText, bytesOf(text)); }

AppleEvent madeEvent(AEReturnID returnID = kAutoGenerateReturnID) {
    const AEAddressDesc target = codeDescriptor(typeApplSignature, fourCharacterCode("MACS"));
    AppleEvent event;
    EXPECT_EQ(AECreateAppleEvent(fourCharacterCode("core"), fourCharacterCode("getd"), &target, returnID,
                                 kAnyTransactionID, &event),
              noErr);
    return event;
}

std::string textOf(const AppleEvent& event, AEKeyword key) {
    AEDesc found;
    EXPECT_EQ(AEGetParamDesc(&event, key, typeText, &found), noErr);
    return std::string(dataOf(found).begin(), dataOf(found).end());
}

TEST(AppleEvents, anEventHasItsAttributes) {
    const AppleEvent event = madeEvent();
    EXPECT_EQ(event.descriptorType, typeAppleEvent);
    AEDesc found;
    ASSERT_EQ(AEGetAttributeDesc(&event, keyEventClassAttr, typeType, &found), noErr);
    EXPECT_EQ(codeOf(found), fourCharacterCode("core"));
    ASSERT_EQ(AEGetAttributeDesc(&event, keyEventIDAttr, typeType, &found), noErr);
    EXPECT_EQ(codeOf(found), fourCharacterCode("getd"));
    ASSERT_EQ(AEGetAttributeDesc(&event, keyAddressAttr, typeApplSignature, &found), noErr);
    EXPECT_EQ(codeOf(found), fourCharacterCode("MACS"));
}

TEST(AppleEvents, automaticReturnIDsDiffer) {
    std::vector<Bytes> seen;
    for (int i = 0; i < 3; i++) {
        const AppleEvent event = madeEvent();
        AEDesc found;
        ASSERT_EQ(AEGetAttributeDesc(&event, keyReturnIDAttr, typeShortInteger, &found), noErr);
        const Bytes id(dataOf(found).begin(), dataOf(found).end());
        EXPECT_EQ(std::ranges::find(seen, id), seen.end());
        seen.push_back(id);
    }
}

TEST(AppleEvents, automaticReturnIDsAreNeverNegative) {
    const AEAddressDesc target;
    for (int i = 0; i < 0x10000; i++) {
        AppleEvent event;
        AEReturnID returnID = -1;
        AEDesc found;
        (void)AECreateAppleEvent(1, 2, &target, kAutoGenerateReturnID, kAnyTransactionID, &event);
        (void)AEGetAttributeDesc(&event, keyReturnIDAttr, typeShortInteger, &found);
        (void)AEGetDescData(&found, &returnID, sizeof returnID);
        ASSERT_GE(returnID, 0);
    }
}

TEST(AppleEvents, aParameterReplacesTheOneWithItsKey) {
    AppleEvent event = madeEvent();
    const AEDesc one = textDescriptor("one");
    const AEDesc two = textDescriptor("two");
    EXPECT_EQ(AEPutParamDesc(&event, firstKey, &one), noErr);
    EXPECT_EQ(AEPutParamDesc(&event, secondKey, &one), noErr);
    EXPECT_EQ(AEPutParamDesc(&event, firstKey, &two), noErr);
    EXPECT_EQ(textOf(event, firstKey), "two");
    EXPECT_EQ(textOf(event, secondKey), "one");
}

TEST(AppleEvents, aParameterIsNotAnAttribute) {
    AppleEvent event = madeEvent();
    const AEDesc text = textDescriptor("elsewhere");
    EXPECT_EQ(AEPutParamDesc(&event, keyAddressAttr, &text), noErr);
    AEDesc found;
    ASSERT_EQ(AEGetAttributeDesc(&event, keyAddressAttr, typeWildCard, &found), noErr);
    EXPECT_EQ(found.descriptorType, typeApplSignature);
}

TEST(AppleEvents, aMissingParameterAndAWrongTypeHaveDifferentErrors) {
    AppleEvent event = madeEvent();
    const AEDesc text = textDescriptor("one");
    ASSERT_EQ(AEPutParamDesc(&event, firstKey, &text), noErr);
    AEDesc found;
    EXPECT_EQ(AEGetParamDesc(&event, secondKey, typeText, &found), errAEDescNotFound);
    EXPECT_EQ(AEGetParamDesc(&event, firstKey, typeAlias, &found), errAECoercionFail);
    EXPECT_EQ(found.descriptorType, typeNull);
}

TEST(AppleEvents, theBytesOfAParameterHaveTheirTypeAndCompleteSize) {
    AppleEvent event = madeEvent();
    const AEDesc text = textDescriptor("abcdef");
    ASSERT_EQ(AEPutParamDesc(&event, firstKey, &text), noErr);
    DescType type = typeNull;
    char buffer[4] = "...";
    Size size = 0;
    EXPECT_EQ(AEGetParamPtr(&event, firstKey, typeWildCard, &type, buffer, 3, &size), noErr);
    EXPECT_EQ(type, typeText);
    EXPECT_STREQ(buffer, "abc");
    EXPECT_EQ(size, 6);
    EXPECT_EQ(AEGetParamPtr(&event, firstKey, typeText, nullptr, buffer, 3, nullptr), noErr);
}

TEST(AppleEvents, aFailureDoesNotChangeTypeAndSize) {
    const AppleEvent event = madeEvent();
    DescType type = typeAlias;
    Size size = 77;
    char byte = 'x';
    EXPECT_EQ(AEGetParamPtr(&event, firstKey, typeText, &type, &byte, 1, &size), errAEDescNotFound);
    EXPECT_EQ(type, typeAlias);
    EXPECT_EQ(size, 77);
    EXPECT_EQ(byte, 'x');
}

TEST(AppleEvents, missingArgumentsAndOtherDescriptorsAreRefused) {
    AppleEvent event = madeEvent();
    AEDesc text = textDescriptor("abc");
    AEDesc found;
    char byte = 0;
    EXPECT_EQ(AECreateAppleEvent(1, 2, nullptr, 0, 0, &found), paramErr);
    EXPECT_EQ(AECreateAppleEvent(1, 2, &text, 0, 0, nullptr), paramErr);
    EXPECT_EQ(AEPutParamDesc(nullptr, firstKey, &text), paramErr);
    EXPECT_EQ(AEPutParamDesc(&event, firstKey, nullptr), paramErr);
    EXPECT_EQ(AEPutParamDesc(&text, firstKey, &event), errAENotAppleEvent);
    EXPECT_EQ(AEGetParamDesc(nullptr, firstKey, typeText, &found), paramErr);
    EXPECT_EQ(AEGetParamDesc(&event, firstKey, typeText, nullptr), paramErr);
    EXPECT_EQ(AEGetParamDesc(&text, firstKey, typeText, &found), errAENotAppleEvent);
    EXPECT_EQ(AEGetParamPtr(nullptr, firstKey, typeText, nullptr, &byte, 1, nullptr), paramErr);
}

TEST(RecordFields, aRecordCanContainRecordsAndNullDescriptors) {
    AERecord inner{typeAERecord, nullptr};
    AERecord outer{typeAERecord, nullptr};
    ASSERT_EQ(putField(inner, firstKey, textDescriptor("deep")), noErr);
    ASSERT_EQ(putField(outer, firstKey, inner), noErr);
    ASSERT_EQ(putField(outer, secondKey, {}), noErr);
    AEDesc found;
    ASSERT_EQ(getField(outer, secondKey, found), noErr);
    EXPECT_EQ(found.descriptorType, typeNull);
    ASSERT_EQ(getField(outer, firstKey, found), noErr);
    ASSERT_EQ(getField(found, firstKey, found), noErr);
    EXPECT_EQ(found.descriptorType, typeText);
}

TEST(RecordFields, invalidBytesAreReported) {
    const Bytes whole = [] {
        AERecord record{typeAERecord, nullptr};
        EXPECT_EQ(putField(record, firstKey, textDescriptor("abc")), noErr);
        return *record.dataHandle;
    }();
    for (std::size_t length = 1; length < whole.size(); length++) {
        AERecord record = descriptorOf(typeAERecord, Bytes(whole.begin(), whole.begin() + length));
        AEDesc found;
        EXPECT_EQ(getField(record, firstKey, found), errAECorruptData) << length;
        EXPECT_EQ(putField(record, secondKey, found), errAECorruptData) << length;
    }
    Bytes huge = whole;
    std::fill_n(huge.begin() + 8, 4, std::uint8_t{0xFF});
    AEDesc found;
    EXPECT_EQ(getField(descriptorOf(typeAERecord, huge), firstKey, found), errAECorruptData);
    Bytes bytesOfNothing = whole;
    std::ranges::copy(bytesOf("null"), bytesOfNothing.begin() + 4);
    EXPECT_EQ(getField(descriptorOf(typeAERecord, bytesOfNothing), firstKey, found), errAECorruptData);
}

TEST(RecordFields, otherDescriptorsHaveNoFields) {
    AEDesc text = textDescriptor("abc");
    AEDesc found;
    EXPECT_EQ(getField(text, firstKey, found), errAEWrongDataType);
    EXPECT_EQ(putField(text, firstKey, found), errAEWrongDataType);
}

} // namespace
} // namespace kestrine
