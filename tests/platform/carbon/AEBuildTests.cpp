#include "platform/carbon/AEBuild.h"
#include "platform/carbon/DescriptorData.h"
#include "platform/carbon/ParameterText.h"
#include "platform/carbon/RecordFields.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace kestrine {
namespace {

using testing::bytesOf;

constexpr FourCharCode finder = fourCharacterCode("MACS");

AEDesc textDescriptor(std::string_view text) { return descriptorOf(typeText, bytesOf(text)); }

AEDesc fieldOf(const AERecord& record, const char (&key)[5]) {
    AEDesc found;
    EXPECT_EQ(getField(record, fourCharacterCode(key), found), noErr) << key;
    return found;
}

void expectCode(const AEDesc& desc, DescType type, const char (&code)[5]) {
    EXPECT_EQ(desc.descriptorType, type);
    EXPECT_EQ(codeOf(desc), fourCharacterCode(code));
}

OSStatus build(AppleEvent& event, const char* text, std::initializer_list<const AEDesc*> descriptors,
               AEBuildError* error = nullptr) {
    return AEBuildAppleEvent(fourCharacterCode("core"), fourCharacterCode("getd"), typeApplSignature, &finder,
                             sizeof finder, kAutoGenerateReturnID, kAnyTransactionID, &event, error, text,
                             descriptors);
}

AERecord read(std::string_view text, std::vector<const AEDesc*> descriptors = {}) {
    const ParameterTextOutcome outcome = readParameterText(text, descriptors);
    EXPECT_EQ(outcome.status, noErr) << text;
    return outcome.parameters;
}

TEST(AEBuildAppleEvent, readsTheParametersOfACommentRequest) {
    const AEDesc item = textDescriptor("item");
    AppleEvent event;
    ASSERT_EQ(build(event, "'----':obj {form:prop,want:type(prop),seld:type(comt),from:(@)}", {&item}),
              noErr);
    AEDesc object;
    ASSERT_EQ(AEGetParamDesc(&event, keyDirectObject, typeWildCard, &object), noErr);
    EXPECT_EQ(object.descriptorType, typeObjectSpecifier);
    expectCode(fieldOf(object, "form"), typeEnumerated, "prop");
    expectCode(fieldOf(object, "want"), typeType, "prop");
    expectCode(fieldOf(object, "seld"), typeType, "comt");
    EXPECT_EQ(*fieldOf(object, "from").dataHandle, bytesOf("item"));
}

TEST(AEBuildAppleEvent, takesTheDescriptorsInOrder) {
    const AEDesc one = textDescriptor("one");
    const AEDesc two = textDescriptor("two");
    const AEDesc truth{typeTrue, nullptr};
    AppleEvent event;
    ASSERT_EQ(build(event, "'----':(@),insh:(@),alrp:(@)", {&one, &two, &truth}), noErr);
    AEDesc found;
    ASSERT_EQ(AEGetParamDesc(&event, fourCharacterCode("insh"), typeText, &found), noErr);
    EXPECT_EQ(*found.dataHandle, bytesOf("two"));
    ASSERT_EQ(AEGetParamDesc(&event, fourCharacterCode("alrp"), typeWildCard, &found), noErr);
    EXPECT_EQ(found.descriptorType, typeTrue);
}

TEST(AEBuildAppleEvent, setsTheAddress) {
    AppleEvent event;
    ASSERT_EQ(build(event, "", {}), noErr);
    AEDesc address;
    ASSERT_EQ(AEGetAttributeDesc(&event, keyAddressAttr, typeWildCard, &address), noErr);
    expectCode(address, typeApplSignature, "MACS");
}

TEST(AEBuildAppleEvent, aSyntaxErrorGivesAStatusAPositionAndNoEvent) {
    AppleEvent event = textDescriptor("before");
    AEBuildError error;
    EXPECT_EQ(build(event, "abcd:type(comt", {}, &error), errAEBuildSyntaxError);
    EXPECT_EQ(error.fError, aeBuildSyntaxBadEOF);
    EXPECT_EQ(error.fErrorPos, 14u);
    EXPECT_EQ(event.descriptorType, typeNull);
}

TEST(AEBuildAppleEvent, needsItsArguments) {
    AppleEvent event;
    AEBuildError error{aeBuildSyntaxNoKey, 7};
    EXPECT_EQ(build(event, nullptr, {}, &error), paramErr);
    EXPECT_EQ(error.fError, aeBuildSyntaxNoErr);
    EXPECT_EQ(error.fErrorPos, 0u);
    EXPECT_EQ(AEBuildAppleEvent(1, 2, typeApplSignature, &finder, 4, 0, 0, nullptr, nullptr, "", {}),
              paramErr);
    EXPECT_EQ(AEBuildAppleEvent(1, 2, typeApplSignature, nullptr, 4, 0, 0, &event, nullptr, "", {}),
              paramErr);
    EXPECT_EQ(event.descriptorType, typeNull);
}

TEST(ParameterText, shortCodesArePaddedWithBlanks) {
    const AERecord record = read("a:b,\t abc : type ( xy ) ");
    expectCode(fieldOf(record, "a   "), typeEnumerated, "b   ");
    expectCode(fieldOf(record, "abc "), typeType, "xy  ");
}

TEST(ParameterText, codesConsistOfLettersAndDigits) {
    expectCode(fieldOf(read("azAZ:09z9"), "azAZ"), typeEnumerated, "09z9");
    for (const std::string_view text : {"a:@", "a:[", "a:`", "a:_", "a:-"})
        EXPECT_EQ(readParameterText(text, {}).status, errAEBuildSyntaxError) << text;
}

TEST(ParameterText, quotedCodesCanHaveAnyCharacters) {
    expectCode(fieldOf(read("'{,:}':'(@) '"), "{,:}"), typeEnumerated, "(@) ");
}

TEST(ParameterText, recordsCanBeEmptyAndWithoutType) {
    EXPECT_EQ(fieldOf(read("rec1:{}"), "rec1").descriptorType, typeAERecord);
    const AERecord inner = fieldOf(read("rec1:{rec2:{code:abcd}}"), "rec1");
    expectCode(fieldOf(fieldOf(inner, "rec2"), "code"), typeEnumerated, "abcd");
}

TEST(ParameterText, aWrongNumberOfDescriptorsIsRefused) {
    const AEDesc desc = textDescriptor("x");
    const std::vector<const AEDesc*> none;
    const std::vector<const AEDesc*> null{nullptr};
    const std::vector<const AEDesc*> two{&desc, &desc};
    EXPECT_EQ(readParameterText("abcd:(@)", none).status, paramErr);
    EXPECT_EQ(readParameterText("abcd:(@)", null).status, paramErr);
    EXPECT_EQ(readParameterText("abcd:(@)", two).status, paramErr);
}

TEST(ParameterText, everyErrorHasItsNumberAndPosition) {
    struct Row {
        std::string_view text;
        AEBuildErrorCode code;
        std::uint32_t place;
    };
    const AEDesc desc;
    for (const Row& row :
         {Row{"ab", aeBuildSyntaxBadEOF, 2}, Row{"ab;x", aeBuildSyntaxNoColon, 2},
          Row{"abcde:x", aeBuildSyntaxBadToken, 0}, Row{":x", aeBuildSyntaxNoKey, 0},
          Row{"a:b,", aeBuildSyntaxBadEOF, 4}, Row{"a:b,,", aeBuildSyntaxNoKey, 4},
          Row{"a:b c", aeBuildSyntaxNoEOF, 4}, Row{"a:)", aeBuildSyntaxBadDesc, 2},
          Row{"a:(x)", aeBuildSyntaxBadDesc, 3}, Row{"a:(@]", aeBuildSyntaxNoCloseParen, 4},
          Row{"a:type(b}", aeBuildSyntaxNoCloseParen, 8}, Row{"a:type()", aeBuildSyntaxBadDesc, 7},
          Row{"a:obj{b:c)", aeBuildSyntaxNoCloseBrace, 9}, Row{"a:obj{b:c", aeBuildSyntaxBadEOF, 9},
          Row{"'abc':x", aeBuildSyntaxMissingQuote, 1}, Row{"'abcd", aeBuildSyntaxMissingQuote, 1},
          Row{"a:'", aeBuildSyntaxMissingQuote, 3}, Row{"a:b}", aeBuildSyntaxNoEOF, 3},
          Row{std::string_view("a:b\0", 4), aeBuildSyntaxNoEOF, 3}}) {
        const std::vector<const AEDesc*> descriptors{&desc};
        const ParameterTextOutcome outcome = readParameterText(row.text, descriptors);
        EXPECT_EQ(outcome.status, errAEBuildSyntaxError) << row.text;
        EXPECT_EQ(outcome.error.fError, row.code) << row.text;
        EXPECT_EQ(outcome.error.fErrorPos, row.place) << row.text;
    }
}

TEST(ParameterText, nestingIsLimited) {
    const auto nested = [](int depth) {
        std::string text = "a:b";
        for (int i = 0; i < depth; i++)
            text = "a:{" + text + "}";
        return readParameterText(text, {}).status;
    };
    EXPECT_EQ(nested(16), noErr);
    std::string siblings = "a:b";
    for (int i = 0; i < 20; i++)
        siblings += ",a:{b:c}";
    EXPECT_EQ(readParameterText(siblings, {}).status, noErr) << "only the depth counts";
    EXPECT_EQ(nested(17), errAEBuildSyntaxError);
    std::string endless;
    for (int i = 0; i < 100000; i++)
        endless += "a:{";
    EXPECT_EQ(readParameterText(endless, {}).status, errAEBuildSyntaxError);
}

} // namespace
} // namespace kestrine
