#include "_MyClasses/Category/MoreAppleEvents.h"

#include "platform/carbon/AEObjects.h"
#include "platform/carbon/DescriptorData.h"
#include "platform/carbon/FinderEvents.h"
#include "platform/carbon/MemoryRefusal.h"
#include "platform/carbon/RecordFields.h"
#include "platform/finder/FinderMetadata.h"
#include "platform/finder/FinderPath.h"
#include "tests/support/SystemFeatures.h"
#include "tests/support/TemporaryFolder.h"

#include <functional>
#include <gtest/gtest.h>

namespace kestrine {
namespace {

using testing::TemporaryFolder;
namespace fs = std::filesystem;

NSString text(const std::string& bytes) { return NSString::fromUTF8(bytes); }

FSRef refOf(const std::string& path) {
    FSRef reference;
    EXPECT_EQ(FSPathMakeRef(reinterpret_cast<const std::uint8_t*>(path.c_str()), &reference, nullptr), noErr);
    return reference;
}

AEDesc fieldOf(const AERecord& record, AEKeyword key) {
    AEDesc found;
    EXPECT_EQ(getField(record, key, found), noErr);
    return found;
}

AppleEvent finderEvent(AEEventClass eventClass, AEEventID eventID) {
    const AEDesc address = codeDescriptor(typeApplSignature, finderSignature);
    AppleEvent event;
    EXPECT_EQ(
        AECreateAppleEvent(eventClass, eventID, &address, kAutoGenerateReturnID, kAnyTransactionID, &event),
        noErr);
    return event;
}

bool goOn() { return false; }

/// Refuses memory for the lifetime of the object.
struct RefusedMemory {
    explicit RefusedMemory(OSErr error) { refuseMemory(error); }
    ~RefusedMemory() { refuseMemory(std::nullopt); }
};

TEST(MoreAENullDesc, makesANullDescriptorAndGivesItBack) {
    AEDesc desc = unicodeTextDescriptor(u"a");
    EXPECT_EQ(MoreAENullDesc(&desc), &desc);
    EXPECT_EQ(desc.descriptorType, typeNull);
    EXPECT_EQ(desc.dataHandle, nullptr);
}

TEST(MoreAENullDescDeathTest, aMissingDescriptorEndsTheProcess) {
    EXPECT_DEATH(MoreAENullDesc(nullptr), "^MoreAppleEvents\\.cpp:[0-9]+: failed assertion `desc != NULL'\n");
}

TEST(MoreAEDisposeDesc, makesANullDescriptor) {
    AEDesc desc = unicodeTextDescriptor(u"a");
    MoreAEDisposeDesc(&desc);
    EXPECT_EQ(desc.descriptorType, typeNull);
    MoreAEDisposeDesc(&desc);
    EXPECT_EQ(desc.dataHandle, nullptr);
}

TEST(MoreAEDisposeDescDeathTest, aMissingDescriptorEndsTheProcess) {
    EXPECT_DEATH(MoreAEDisposeDesc(nullptr),
                 "^MoreAppleEvents\\.cpp:[0-9]+: failed assertion `desc != NULL'\n");
}

TEST(MoreAEDisposeDescDeathTest, aDisposalThatFailsEndsTheProcess) {
    AEDesc impossible{typeNull, std::make_shared<const Bytes>(Bytes{1})};
    EXPECT_EXIT(MoreAEDisposeDesc(&impossible), ::testing::KilledBySignal(SIGABRT),
                "^MoreAppleEvents\\.cpp:[0-9]+: failed assertion `junk == noErr'\n");
}

TEST(MoreAEDescriptors, aStringBecomesADescriptorAndCanBeReadBack) {
    for (const NSString& string : {NSString(), NSString(u"caf\u00e9 \U0001F600"), NSString(u"half \xd800"),
                                   NSString(std::u16string(u"a\0b", 3)), text("raw \xff")}) {
        AEDesc desc;
        OptionalString back;
        EXPECT_EQ(MoreAECreateAEDescFromCFString(string, &desc), noErr);
        EXPECT_EQ(desc.descriptorType, typeUnicodeText);
        EXPECT_EQ(AEGetDescDataSize(&desc), static_cast<Size>(2 * string.length()));
        EXPECT_EQ(MoreAEGetCFStringFromDescriptor(&desc, &back), noErr);
        EXPECT_EQ(back, string);
    }
}

TEST(MoreAEDescriptors, aMissingStringOrTargetIsAParameterError) {
    AEDesc desc = unicodeTextDescriptor(u"before");
    OptionalString string = u"before";
    EXPECT_EQ(MoreAECreateAEDescFromCFString(std::nullopt, &desc), paramErr);
    EXPECT_EQ(desc.descriptorType, typeNull);
    EXPECT_EQ(MoreAECreateAEDescFromCFString(NSString(u"a"), nullptr), paramErr);
    EXPECT_EQ(MoreAEGetCFStringFromDescriptor(&desc, nullptr), paramErr);
    EXPECT_EQ(MoreAEGetCFStringFromDescriptor(nullptr, &string), paramErr);
    EXPECT_EQ(string, std::nullopt);
}

TEST(MoreAEDescriptors, lackOfMemoryGivesTheMemoryErrorOrItsUsualNumber) {
    AEDesc desc;
    {
        const RefusedMemory refused(-117);
        EXPECT_EQ(MoreAECreateAEDescFromCFString(NSString(u"a"), &desc), -117);
    }
    const RefusedMemory refused(noErr);
    EXPECT_EQ(MoreAECreateAEDescFromCFString(NSString(u"a"), &desc), memFullErr);
    EXPECT_EQ(desc.descriptorType, typeNull);
}

TEST(MoreAEDescriptors, textOfAnotherTypeIsCoerced) {
    const AEDesc desc = descriptorOf(typeText, testing::bytesOf("caf\xc3\xa9"));
    OptionalString string;
    EXPECT_EQ(MoreAEGetCFStringFromDescriptor(&desc, &string), noErr);
    EXPECT_EQ(string, NSString(u"caf\u00e9"));
}

TEST(MoreAEDescriptors, aDescriptorWithoutTextGivesTheFailureAndNullGivesNull) {
    const AEDesc truth{typeTrue, nullptr};
    const AEDesc nothing;
    OptionalString string = u"before";
    EXPECT_EQ(MoreAEGetCFStringFromDescriptor(&truth, &string), errAECoercionFail);
    EXPECT_EQ(string, std::nullopt);
    EXPECT_EQ(MoreAEGetCFStringFromDescriptor(&nothing, &string), noErr);
    EXPECT_EQ(string, std::nullopt);
}

TEST(MoreAEOAliases, anAliasBecomesADescriptorAndKeepsItsState) {
    const Handle alias = NewHandle(3);
    ASSERT_NE(alias, nullptr);
    const std::int8_t state = HGetState(alias);
    AEDesc desc;
    EXPECT_EQ(MoreAEOCreateAliasDesc(alias, &desc), noErr);
    EXPECT_EQ(desc.descriptorType, typeAlias);
    EXPECT_EQ(AEGetDescDataSize(&desc), 3);
    EXPECT_EQ(HGetState(alias), state);
    EXPECT_EQ(MoreAEOCreateAliasDesc(alias, nullptr), paramErr);
    EXPECT_EQ(MoreAEOCreateAliasDesc(nullptr, &desc), paramErr);
    EXPECT_EQ(desc.descriptorType, typeNull);
    DisposeHandle(alias);
}

TEST(MoreAEOAliases, aReferenceBecomesAnAliasThatResolvesToIt) {
    const TemporaryFolder folder;
    const std::string path = folder.write("file", "");
    const FSRef reference = refOf(path);
    AEDesc desc;
    EXPECT_EQ(MoreAEOCreateAliasDescFromFSRef(&reference, &desc), noErr);
    EXPECT_EQ(*pathOfAlias(dataOf(desc)), fs::canonical(path));
}

TEST(MoreAEOAliases, anEmptyReferenceOrAMissingResultIsAParameterError) {
    const FSRef empty;
    const FSRef root = refOf("/");
    AEDesc desc;
    AEDesc container;
    EXPECT_EQ(MoreAEOCreateAliasDescFromFSRef(&empty, &desc), paramErr);
    EXPECT_EQ(MoreAEOCreateAliasDescFromFSRef(nullptr, &desc), paramErr);
    EXPECT_EQ(MoreAEOCreateAliasDescFromFSRef(&root, nullptr), paramErr);
    EXPECT_EQ(MoreAEOCreateAliasObjectFromFSRef(&empty, &container, &desc), paramErr);
    EXPECT_EQ(MoreAEOCreateAliasObjectFromFSRef(&root, nullptr, &desc), paramErr);
    const RefusedMemory refused(memFullErr);
    EXPECT_EQ(MoreAEOCreateAliasDescFromFSRef(&root, &desc), paramErr);
}

TEST(MoreAEOAliases, anObjectByAliasLiesInItsContainer) {
    const FSRef root = refOf("/");
    AEDesc container = unicodeTextDescriptor(u"container");
    AEDesc object;
    ASSERT_EQ(MoreAEOCreateAliasObjectFromFSRef(&root, &container, &object), noErr);
    EXPECT_EQ(object.descriptorType, typeObjectSpecifier);
    EXPECT_EQ(codeOf(fieldOf(object, keyAEDesiredClass)), typeAlias);
    EXPECT_EQ(codeOf(fieldOf(object, keyAEKeyForm)), formAbsolutePosition);
    EXPECT_EQ(fieldOf(object, keyAEKeyData).descriptorType, typeAlias);
    EXPECT_EQ(unicodeTextOf(fieldOf(object, keyAEContainer)), NSString(u"container"));
    EXPECT_EQ(container.descriptorType, typeUnicodeText);
}

TEST(MoreAEOSpecifiers, aFileAndAFolderAreNamedByTheirFinderPaths) {
    const TemporaryFolder folder;
    struct Row {
        std::string path;
        DescType desiredClass;
        NSString end;
    };
    for (const Row& row : {Row{folder.write("a:b \"c\"", ""), cFile, u""}, Row{folder.path(), cObject, u":"},
                           Row{"/", cObject, u":"}}) {
        AEDesc object;
        ASSERT_EQ(MoreAEOCreateObjSpecifierFromCFString(text(row.path), &object), noErr);
        EXPECT_EQ(codeOf(fieldOf(object, keyAEDesiredClass)), row.desiredClass);
        EXPECT_EQ(codeOf(fieldOf(object, keyAEKeyForm)), formName);
        EXPECT_EQ(unicodeTextOf(fieldOf(object, keyAEKeyData)),
                  *finderPathOf(fs::canonical(row.path)) + row.end);
        EXPECT_EQ(fieldOf(object, keyAEContainer).descriptorType, typeNull);
    }
}

TEST(MoreAEOSpecifiers, aFoldersURLMarkedAsAFileIsTreatedAsAFile) {
    const CFURLRef url = CFURLCreateWithFileSystemPath(NSString(u"/"), kCFURLPOSIXPathStyle, false);
    AEDesc object;
    ASSERT_EQ(MoreAEOCreateObjSpecifierFromCFURLRef(url, &object), noErr);
    EXPECT_EQ(codeOf(fieldOf(object, keyAEDesiredClass)), cFile);
}

TEST(MoreAEOSpecifiers, aURLWithoutAPathIsAnUnknownError) {
    const TemporaryFolder folder;
    const FSRef empty;
    AEDesc object;
    EXPECT_EQ(MoreAEOCreateObjSpecifierFromFSRef(&empty, &object), coreFoundationUnknownErr);
    for (const OptionalString& path : {OptionalString(text(folder / "missing")), OptionalString(),
                                       OptionalString(u"/\xd800"), OptionalString(u"")})
        EXPECT_EQ(MoreAEOCreateObjSpecifierFromCFString(path, &object), coreFoundationUnknownErr);
    const CFURLRef gone =
        CFURLCreateWithFileSystemPath(text(folder / "missing"), kCFURLPOSIXPathStyle, false);
    EXPECT_EQ(MoreAEOCreateObjSpecifierFromCFURLRef(gone, &object), coreFoundationUnknownErr);
}

TEST(MoreAEOSpecifiers, missingArgumentsAreParameterErrors) {
    const FSRef root = refOf("/");
    AEDesc object;
    EXPECT_EQ(MoreAEOCreateObjSpecifierFromCFURLRef(nullptr, &object), paramErr);
    EXPECT_EQ(MoreAEOCreateObjSpecifierFromFSRef(nullptr, &object), paramErr);
    EXPECT_EQ(MoreAEOCreateObjSpecifierFromFSRef(&root, nullptr), paramErr);
}

TEST(MoreAEDescriptors, resultsAreNullDescriptorsAfterAFailure) {
    const FSRef none;
    AEDesc container, desc = unicodeTextDescriptor(u"left from before");
    const std::function<OSStatus()> failing[] = {
        [&] { return MoreAECreateAEDescFromCFString(std::nullopt, &desc); },
        [&] { return MoreAEOCreateAliasDesc(nullptr, &desc); },
        [&] { return MoreAEOCreateAliasDescFromFSRef(&none, &desc); },
        [&] { return MoreAEOCreateAliasObjectFromFSRef(&none, &container, &desc); },
        [&] { return MoreAEOCreateObjSpecifierFromCFURLRef(nullptr, &desc); },
        [&] { return MoreAEOCreateObjSpecifierFromFSRef(nullptr, &desc); },
        [&] { return MoreAEOCreateObjSpecifierFromCFString(std::nullopt, &desc); },
        [&] { return MoreAESendEventReturnAEDesc(nullptr, nullptr, typeWildCard, &desc); },
        [&] { return MoreAESendEventReturnAEDesc(goOn, nullptr, typeWildCard, &desc); },
    };
    for (const auto& fail : failing) {
        EXPECT_NE(fail(), noErr);
        EXPECT_EQ(desc.descriptorType, typeNull) << &fail - failing;
        desc = unicodeTextDescriptor(u"left from before");
    }
}

TEST(MoreAEOSpecifiers, lackOfMemoryIsReported) {
    const RefusedMemory refused(memFullErr);
    AEDesc object;
    EXPECT_EQ(MoreAEOCreateObjSpecifierFromCFString(NSString(u"/"), &object), memFullErr);
}

TEST(MoreAEGetHandlerError, isTheNumberInTheReply) {
    AppleEvent reply = finderEvent(kCoreEventClass, kAEAnswer);
    EXPECT_EQ(MoreAEGetHandlerError(&reply), noErr);
    const OSErr number = -43;
    AEDesc desc;
    ASSERT_EQ(AECreateDesc(typeShortInteger, &number, sizeof number, &desc), noErr);
    ASSERT_EQ(AEPutParamDesc(&reply, keyErrorNumber, &desc), noErr);
    EXPECT_EQ(MoreAEGetHandlerError(&reply), -43);
}

TEST(MoreAEGetHandlerError, aMissingReplyHasNoErrorAndAnUnreadableOneIsReported) {
    const AppleEvent nothing;
    EXPECT_EQ(MoreAEGetHandlerError(nullptr), noErr);
    EXPECT_EQ(MoreAEGetHandlerError(&nothing), noErr);
    AppleEvent reply = finderEvent(kCoreEventClass, kAEAnswer);
    const AEDesc noNumber = unicodeTextDescriptor(u"many");
    ASSERT_EQ(AEPutParamDesc(&reply, keyErrorNumber, &noNumber), noErr);
    EXPECT_EQ(MoreAEGetHandlerError(&reply), errAECoercionFail);
}

/// An event that requests the comment of the item at `path`.
AppleEvent commentRequest(const std::string& path) {
    AEDesc item;
    EXPECT_EQ(MoreAEOCreateObjSpecifierFromCFString(text(path), &item), noErr);
    AEDesc name = codeDescriptor(typeType, pComment);
    AEDesc property;
    EXPECT_EQ(CreateObjSpecifier(cProperty, &item, formPropertyID, &name, false, &property), noErr);
    AppleEvent event = finderEvent(kAECoreSuite, kAEGetData);
    EXPECT_EQ(AEPutParamDesc(&event, keyDirectObject, &property), noErr);
    return event;
}

TEST(MoreAESendEventReturnAEDesc, givesTheDirectObjectAsTheRequestedType) {
    if (!testing::keepsAttributes())
        GTEST_SKIP() << "the temporary folder's file system keeps no extended attributes";
    const TemporaryFolder folder;
    const std::string path = folder.write("file", "");
    ASSERT_TRUE(setFinderComment(path, u"note"));
    const AppleEvent event = commentRequest(path);
    AEDesc got;
    EXPECT_EQ(MoreAESendEventReturnAEDesc(goOn, &event, typeText, &got), noErr);
    EXPECT_EQ(got.descriptorType, typeText);
    EXPECT_EQ(*got.dataHandle, testing::bytesOf("note"));
    EXPECT_EQ(MoreAESendEventReturnAEDesc(goOn, &event, typePString, &got), errAECoercionFail);
    EXPECT_EQ(MoreAESendEventReturnAEDesc(goOn, &event, typeText, nullptr), paramErr);
}

TEST(MoreAESendEventReturnAEDesc, needsAnIdleProcedure) {
    const AppleEvent event = finderEvent(kAEFinderEvents, kAESync);
    AEDesc got;
    EXPECT_EQ(MoreAESendEventReturnAEDesc(nullptr, &event, typeWildCard, &got), paramErr);
}

TEST(MoreAESendEventReturnAEDesc, givesFailuresToSendAndTheHandlersError) {
    const AppleEvent unknown = finderEvent(kAECoreSuite, fourCharacterCode("delo"));
    const AppleEvent silent = finderEvent(kAEFinderEvents, kAESync);
    AEDesc got;
    EXPECT_EQ(MoreAESendEventReturnAEDesc(goOn, &unknown, typeWildCard, &got), errAEEventNotHandled);
    EXPECT_EQ(MoreAESendEventReturnAEDesc(goOn, nullptr, typeWildCard, &got), paramErr);
    EXPECT_EQ(MoreAESendEventReturnAEDesc([] { return true; }, &silent, typeWildCard, &got),
              errAEWaitCanceled);
    EXPECT_EQ(MoreAESendEventReturnAEDesc(goOn, &silent, typeWildCard, &got), errAEDescNotFound);
}

TEST(MoreAESendEventNoReturnValue, givesTheHandlersErrorOnlyWithAnIdleProcedure) {
    const AppleEvent unknown = finderEvent(kAECoreSuite, fourCharacterCode("delo"));
    EXPECT_EQ(MoreAESendEventNoReturnValue(goOn, &unknown), errAEEventNotHandled);
    EXPECT_EQ(MoreAESendEventNoReturnValue(nullptr, &unknown), noErr);
}

TEST(MoreAESendEventNoReturnValue, givesTheStatusOfSending) {
    const AppleEvent update = finderEvent(kAEFinderEvents, kAESync);
    EXPECT_EQ(MoreAESendEventNoReturnValue(goOn, &update), noErr);
    EXPECT_EQ(MoreAESendEventNoReturnValue(goOn, nullptr), paramErr);
    EXPECT_EQ(MoreAESendEventNoReturnValue(nullptr, nullptr), paramErr);
}

} // namespace
} // namespace kestrine
