#include "platform/carbon/AEBuild.h"
#include "platform/carbon/AEObjects.h"
#include "platform/carbon/AESending.h"
#include "platform/carbon/Aliases.h"
#include "platform/carbon/DescriptorData.h"
#include "platform/carbon/FinderEvents.h"
#include "platform/finder/FinderMetadata.h"
#include "platform/finder/FinderPath.h"
#include "tests/support/FinderPlace.h"
#include "tests/support/SystemFeatures.h"

#include <gtest/gtest.h>

namespace kestrine {
namespace {

namespace fs = std::filesystem;

constexpr const char* getComment = "'----':obj {form:prop,want:type(prop),seld:type(comt),from:(@)}";
constexpr const char* setComment = "'----':obj {form:prop,want:type(prop),seld:type(comt),from:(@)},data:(@)";
constexpr const char* cloneItem = "'----':(@),insh:(@),alrp:(@)";

AppleEvent eventOf(const char (&eventClass)[5], const char (&eventID)[5], const char* text,
                   std::initializer_list<const AEDesc*> descriptors, const char (&signature)[5] = "MACS") {
    AppleEvent event;
    const FourCharCode address = fourCharacterCode(signature);
    EXPECT_EQ(AEBuildAppleEvent(fourCharacterCode(eventClass), fourCharacterCode(eventID), typeApplSignature,
                                &address, sizeof address, kAutoGenerateReturnID, kAnyTransactionID, &event,
                                nullptr, text, descriptors),
              noErr);
    return event;
}

AEDesc named(const NSString& finderPath, DescType desiredClass = cFile) {
    AEDesc application;
    AEDesc name = unicodeTextDescriptor(finderPath);
    AEDesc object;
    EXPECT_EQ(CreateObjSpecifier(desiredClass, &application, formName, &name, true, &object), noErr);
    return object;
}

AEDesc itemAt(const std::string& path) { return named(*finderPathOf(path)); }

AppleEvent replyTo(const AppleEvent& event) {
    AppleEvent reply;
    EXPECT_EQ(AESendMessage(&event, &reply, kAEWaitReply, kNoTimeOut), noErr);
    return reply;
}

/// 0 when the reply tells none.
int errorIn(const AppleEvent& reply) {
    OSErr number = 0;
    const OSErr status =
        AEGetParamPtr(&reply, keyErrorNumber, typeShortInteger, nullptr, &number, sizeof number, nullptr);
    EXPECT_TRUE(status == noErr || status == errAEDescNotFound);
    return number;
}

class FinderEvents : public ::testing::Test {
protected:
    void SetUp() override {
        if (!testing::keepsAttributes())
            GTEST_SKIP() << "the temporary folder's file system keeps no extended attributes";
    }

    const testing::FinderPlace place_;
};

TEST_F(FinderEvents, aCommentIsSetAndGot) {
    const std::string path = place_.write("a:b \"c\".txt");
    const AEDesc item = itemAt(path);
    const AEDesc comment = unicodeTextDescriptor(u"caf\u00e9 \U0001F600");
    EXPECT_EQ(errorIn(replyTo(eventOf("core", "setd", setComment, {&item, &comment}))), 0);
    EXPECT_EQ(*finderComment(path), NSString(u"caf\u00e9 \U0001F600"));
    const AppleEvent reply = replyTo(eventOf("core", "getd", getComment, {&item}));
    AEDesc got;
    ASSERT_EQ(AEGetParamDesc(&reply, keyDirectObject, typeWildCard, &got), noErr);
    EXPECT_EQ(got.descriptorType, typeUnicodeText);
    EXPECT_EQ(unicodeTextOf(got), NSString(u"caf\u00e9 \U0001F600"));
}

TEST_F(FinderEvents, noCommentIsAnEmptyText) {
    const AEDesc item = itemAt(place_.write("file"));
    const AppleEvent reply = replyTo(eventOf("core", "getd", getComment, {&item}));
    AEDesc got;
    ASSERT_EQ(AEGetParamDesc(&reply, keyDirectObject, typeWildCard, &got), noErr);
    EXPECT_EQ(got.descriptorType, typeUnicodeText);
    EXPECT_EQ(AEGetDescDataSize(&got), 0);
}

TEST_F(FinderEvents, aCommentMayAlsoBeGivenAsText) {
    const std::string path = place_.write("file");
    const AEDesc item = itemAt(path);
    const AEDesc comment = descriptorOf(typeText, testing::bytesOf("caf\xc3\xa9"));
    EXPECT_EQ(errorIn(replyTo(eventOf("core", "setd", setComment, {&item, &comment}))), 0);
    EXPECT_EQ(*finderComment(path), NSString(u"caf\u00e9"));
}

TEST_F(FinderEvents, aCloneGoesIntoTheFolder) {
    const AEDesc item = itemAt(place_.write("file", "new"));
    const AEDesc folder = named(*finderPathOf(place_.makeFolder("into")) + u":", cObject);
    const AEDesc no{typeFalse, nullptr};
    EXPECT_EQ(errorIn(replyTo(eventOf("core", "clon", cloneItem, {&item, &folder, &no}))), 0);
    EXPECT_EQ(testing::readFile(place_ / "into/file"), "new");
    EXPECT_EQ(testing::readFile(place_ / "file"), "new");
}

TEST_F(FinderEvents, aTakenNameGivesWayOnlyWhenAsked) {
    const AEDesc item = itemAt(place_.write("file", "new"));
    place_.write("into/file", "old");
    const AEDesc folder = named(*finderPathOf(place_ / "into") + u":", cObject);
    const AEDesc no{typeFalse, nullptr};
    const AEDesc yes{typeTrue, nullptr};
    EXPECT_EQ(errorIn(replyTo(eventOf("core", "clon", cloneItem, {&item, &folder, &no}))), -15267);
    EXPECT_EQ(testing::readFile(place_ / "into/file"), "old");
    EXPECT_EQ(errorIn(replyTo(eventOf("core", "clon", cloneItem, {&item, &folder, &yes}))), 0);
    EXPECT_EQ(testing::readFile(place_ / "into/file"), "new");
}

TEST_F(FinderEvents, withoutTheReplacingParameterNothingIsReplaced) {
    const AEDesc item = itemAt(place_.write("file", "new"));
    place_.write("into/file", "old");
    const AEDesc folder = itemAt(place_ / "into");
    EXPECT_EQ(errorIn(replyTo(eventOf("core", "clon", "'----':(@),insh:(@)", {&item, &folder}))), -15267);
    EXPECT_EQ(testing::readFile(place_ / "into/file"), "old");
}

TEST_F(FinderEvents, anErrorComesWithASentence) {
    const AEDesc item = named(u"No Such Volume:file");
    const AppleEvent reply = replyTo(eventOf("core", "getd", getComment, {&item}));
    EXPECT_EQ(errorIn(reply), errAENoSuchObject);
    AEDesc text;
    ASSERT_EQ(AEGetParamDesc(&reply, keyErrorString, typeUnicodeText, &text), noErr);
    EXPECT_GT(AEGetDescDataSize(&text), 0);
    EXPECT_EQ(AEGetParamDesc(&reply, keyDirectObject, typeWildCard, &text), errAEDescNotFound);
}

TEST_F(FinderEvents, anAliasIsAnItemWhereverItIsSaidToBe) {
    const std::string path = place_.write("file");
    ASSERT_TRUE(setFinderComment(path, u"by alias"));
    FSRef reference;
    ASSERT_EQ(FSPathMakeRef(reinterpret_cast<const std::uint8_t*>(path.c_str()), &reference, nullptr), noErr);
    AliasHandle handle = nullptr;
    ASSERT_EQ(FSNewAlias(nullptr, &reference, &handle), noErr);
    AEDesc alias = descriptorOf(typeAlias, Bytes(*handle, *handle + GetHandleSize(handle)));
    DisposeHandle(handle);
    AEDesc container = itemAt(place_.path());
    AEDesc object;
    ASSERT_EQ(CreateObjSpecifier(typeAlias, &container, formAbsolutePosition, &alias, false, &object), noErr);
    for (const AEDesc* item : {&alias, &object}) {
        const AppleEvent reply = replyTo(eventOf("core", "getd", getComment, {item}));
        AEDesc got;
        ASSERT_EQ(AEGetParamDesc(&reply, keyDirectObject, typeUnicodeText, &got), noErr);
        EXPECT_EQ(unicodeTextOf(got), NSString(u"by alias"));
    }
}

TEST_F(FinderEvents, whatIsNoObjectOfTheFinderIsRefused) {
    AEDesc container = itemAt(place_.path());
    AEDesc name = unicodeTextDescriptor(*finderPathOf(place_.write("file")));
    AEDesc inside;
    AEDesc ofOtherClass;
    AEDesc application;
    ASSERT_EQ(CreateObjSpecifier(cFile, &container, formName, &name, false, &inside), noErr);
    ASSERT_EQ(
        CreateObjSpecifier(fourCharacterCode("cwin"), &application, formName, &name, false, &ofOtherClass),
        noErr);
    const AEDesc badAlias = descriptorOf(typeAlias, {1, 2, 3});
    const AEDesc brokenSpecifier = descriptorOf(typeObjectSpecifier, {1, 2, 3});
    for (const AEDesc& item : {inside, ofOtherClass, badAlias, brokenSpecifier, name, application})
        EXPECT_EQ(errorIn(replyTo(eventOf("core", "getd", getComment, {&item}))), errAENoSuchObject);
}

TEST_F(FinderEvents, onlyTheCommentCanBeGotAndSet) {
    const AEDesc item = itemAt(place_.write("file"));
    constexpr const char* name = "'----':obj {form:prop,want:type(prop),seld:type(pnam),from:(@)}";
    EXPECT_EQ(errorIn(replyTo(eventOf("core", "getd", name, {&item}))), errAENoSuchObject);
    EXPECT_EQ(errorIn(replyTo(eventOf("core", "getd", "'----':(@)", {&item}))), errAENoSuchObject);
}

TEST_F(FinderEvents, missingAndWrongParametersAreTold) {
    const AEDesc item = itemAt(place_.write("file"));
    const AEDesc folder = itemAt(place_.makeFolder("into"));
    const AEDesc word = codeDescriptor(typeEnumerated, 1);
    EXPECT_EQ(errorIn(replyTo(eventOf("core", "getd", "", {}))), errAEDescNotFound);
    EXPECT_EQ(errorIn(replyTo(eventOf("core", "setd", getComment, {&item}))), errAEDescNotFound);
    EXPECT_EQ(errorIn(replyTo(eventOf("core", "setd", setComment, {&item, &word}))), errAECoercionFail);
    EXPECT_EQ(errorIn(replyTo(eventOf("core", "clon", "'----':(@)", {&item}))), errAEDescNotFound);
    EXPECT_EQ(errorIn(replyTo(eventOf("core", "clon", cloneItem, {&item, &folder, &word}))),
              errAECoercionFail);
    EXPECT_FALSE(fs::exists(place_ / "into/file"));
}

TEST_F(FinderEvents, anUpdateIsTakenAndOtherEventsAreNot) {
    EXPECT_EQ(errorIn(replyTo(eventOf("fndr", "fupd", "", {}))), 0);
    EXPECT_EQ(errorIn(replyTo(eventOf("core", "delo", "", {}))), errAEEventNotHandled);
    EXPECT_EQ(errorIn(replyTo(eventOf("aevt", "getd", "", {}))), errAEEventNotHandled);
}

TEST_F(FinderEvents, aFileSystemWithoutAttributesIsAnError) {
    const AEDesc item = itemAt("/proc/version");
    const AEDesc comment = unicodeTextDescriptor(u"x");
    EXPECT_EQ(errorIn(replyTo(eventOf("core", "setd", setComment, {&item, &comment}))),
              errFSOperationNotSupported);
}

TEST(AESend, onlyTheFinderCanBeReached) {
    const AppleEvent event = eventOf("fndr", "fupd", "", {}, "WXYZ");
    AppleEvent reply = event;
    EXPECT_EQ(AESendMessage(&event, &reply, kAEWaitReply, kNoTimeOut), procNotFound);
    EXPECT_EQ(reply.descriptorType, typeNull);
}

TEST(AESend, aReplyHasTheReturnIDOfItsEvent) {
    const AppleEvent event = eventOf("fndr", "fupd", "", {});
    const AppleEvent reply = replyTo(event);
    AEDesc asked;
    AEDesc answered;
    ASSERT_EQ(AEGetAttributeDesc(&event, keyReturnIDAttr, typeShortInteger, &asked), noErr);
    ASSERT_EQ(AEGetAttributeDesc(&reply, keyReturnIDAttr, typeShortInteger, &answered), noErr);
    EXPECT_EQ(*asked.dataHandle, *answered.dataHandle);
}

TEST(AESend, withoutAReplyNoneIsMade) {
    const AppleEvent event = eventOf("core", "delo", "", {});
    AppleEvent reply = event;
    EXPECT_EQ(AESendMessage(&event, &reply, kAENoReply, kNoTimeOut), noErr);
    EXPECT_EQ(reply.descriptorType, typeNull);
    EXPECT_EQ(AESendMessage(&event, nullptr, kAENoReply, kNoTimeOut), noErr);
}

TEST(AESend, theIdleProcedureIsCalledAndMayEndTheWaiting) {
    const AppleEvent event = eventOf("fndr", "fupd", "", {});
    AppleEvent reply;
    int calls = 0;
    const auto send = [&](AESendMode mode, bool stops) {
        return AESend(&event, &reply, mode, kAENormalPriority, kNoTimeOut, [&] { return calls++, stops; });
    };
    EXPECT_EQ(send(kAEWaitReply, false), noErr);
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(reply.descriptorType, typeAppleEvent);
    EXPECT_EQ(send(kAEWaitReply, true), errAEWaitCanceled);
    EXPECT_EQ(reply.descriptorType, typeNull);
    EXPECT_EQ(send(kAENoReply, true), noErr);
    EXPECT_EQ(calls, 2);
}

TEST(AESend, missingArgumentsAndOtherModesAreRefused) {
    const AppleEvent event = eventOf("fndr", "fupd", "", {});
    const AEDesc text = unicodeTextDescriptor(u"no event");
    AppleEvent reply;
    EXPECT_EQ(AESendMessage(nullptr, &reply, kAEWaitReply, kNoTimeOut), paramErr);
    EXPECT_EQ(AESendMessage(&event, nullptr, kAEWaitReply, kNoTimeOut), paramErr);
    EXPECT_EQ(AESendMessage(&event, &reply, 2, kNoTimeOut), paramErr);
    EXPECT_EQ(AESendMessage(&text, &reply, kAEWaitReply, kNoTimeOut), errAENotAppleEvent);
}

TEST(CreateObjSpecifier, disposesItsInputsOnlyWhenAsked) {
    AEDesc container = unicodeTextDescriptor(u"container");
    AEDesc key = unicodeTextDescriptor(u"key");
    AEDesc object;
    EXPECT_EQ(CreateObjSpecifier(cFile, &container, formName, &key, false, &object), noErr);
    EXPECT_EQ(key.descriptorType, typeUnicodeText);
    EXPECT_EQ(CreateObjSpecifier(cFile, &container, formName, &key, true, &object), noErr);
    EXPECT_EQ(key.descriptorType, typeNull);
    EXPECT_EQ(container.descriptorType, typeNull);
}

TEST(CreateObjSpecifier, needsItsArguments) {
    AEDesc desc;
    EXPECT_EQ(CreateObjSpecifier(cFile, nullptr, formName, &desc, false, &desc), paramErr);
    EXPECT_EQ(CreateObjSpecifier(cFile, &desc, formName, nullptr, false, &desc), paramErr);
    EXPECT_EQ(CreateObjSpecifier(cFile, &desc, formName, &desc, false, nullptr), paramErr);
}

} // namespace
} // namespace kestrine
