#include "_MyClasses/Category/FileManagerUtilityMetadata.h"

#include "_MyClasses/Category/MoreAppleEvents.h"
#include "platform/carbon/AEBuild.h"
#include "platform/carbon/FinderEvents.h"
#include "platform/carbon/Gestalt.h"
#include "platform/carbon/MDItem.h"
#include "platform/foundation/NSException.h"
#include "platform/foundation/NSLog.h"
#include "platform/foundation/text/NSStringConversion.h"
#include "platform/foundation/text/UTF8.h"

#include <algorithm>
#include <array>

namespace kestrine {
namespace {

/// The first version with Spotlight comments.
constexpr std::int32_t version10_5 = 0x1050;

/// The limit in bytes; longer comments in the Finder's reply are truncated.
constexpr Size maxCommentSize = 256;

OptionalString spotlightComment(const OptionalString& path) {
    const MDItemRef item = MDItemCreate(path);
    if (item == nullptr)
        return std::nullopt;
    return NSString::fromObject(MDItemCopyAttribute(item, kMDItemFinderComment));
}

/// Removes the bytes of an incomplete character from the end.
NSString withoutCutCharacter(const NSString& text) {
    std::u16string units = text.utf16();
    const auto endsInLoneByte = [&units] {
        const std::size_t length = units.size();
        return length > 0 && isLowSurrogate(units[length - 1])
               && (length == 1 || !isHighSurrogate(units[length - 2]));
    };
    for (int i = 0; i < 3 && endsInLoneByte(); i++)
        units.pop_back();
    return units;
}

/// The comment in the Finder's reply; empty when it is not of type 'TEXT'.
NSString commentIn(const AppleEvent& reply) {
    std::array<char, 1 + maxCommentSize + 1> buffer{}; // a length byte, the text, a zero
    char* const text = buffer.data() + 1;
    DescType type = typeNull;
    Size size = 0;
    OSErr status =
        AEGetParamPtr(&reply, keyDirectObject, typePString, &type, buffer.data(), maxCommentSize, &size);
    if (status != noErr)
        status = AEGetParamPtr(&reply, keyDirectObject, typeText, &type, text, maxCommentSize, &size);
    if (status != noErr || type != typeText)
        return u"";
    text[std::min(size, maxCommentSize)] = '\0';
    const NSString comment = NSString::fromUTF8(text);
    return size > maxCommentSize ? withoutCutCharacter(comment) : comment;
}

/// Makes an event of class 'core' for the Finder, with the parameters that `text` describes.
OSStatus buildFinderRequest(AEEventID eventID, const char* text,
                            std::initializer_list<const AEDesc*> descriptors, AppleEvent* event) {
    return AEBuildAppleEvent(kAECoreSuite, eventID, typeApplSignature, &finderSignature,
                             sizeof finderSignature, kAutoGenerateReturnID, kAnyTransactionID, event, nullptr,
                             text, descriptors);
}

/// Sends the event and waits for the reply. The status only reports the delivery.
OSStatus sendFinderRequest(const AppleEvent& event, AppleEvent& reply) {
    return AESendMessage(&event, &reply, kAEWaitReply, kNoTimeOut);
}

/// The comment that the Finder returns for an Apple Event.
NSString finderCommentOf(const OptionalString& path) {
    AEDesc item;
    AppleEvent event;
    AppleEvent reply;
    if (MoreAEOCreateObjSpecifierFromCFString(path, &item) != noErr)
        return u"";
    if (buildFinderRequest(kAEGetData, "'----':obj {form:prop,want:type(prop),seld:type(comt),from:(@)}",
                           {&item}, &event)
        != noErr)
        return u"";
    NSString comment;
    if (sendFinderRequest(event, reply) == noErr && reply.descriptorType != typeNull)
        comment = commentIn(reply);
    NSLog(comment);
    return comment;
}

/// Raises when the comment cannot be encoded as UTF-8, in which it is stored.
void sendComment(const NSString& comment, const AEDesc& item) {
    (void)UTF8String(comment);
    AEDesc text;
    AppleEvent event;
    AppleEvent reply;
    if (MoreAECreateAEDescFromCFString(comment, &text) != noErr)
        return;
    if (buildFinderRequest(kAESetData,
                           "'----':obj {form:prop,want:type(prop),seld:type(comt),from:(@)},data:(@)",
                           {&item, &text}, &event)
        == noErr)
        (void)sendFinderRequest(event, reply);
}

bool isEmpty(const OptionalString& text) { return !text || text->isEmpty(); }

} // namespace

OptionalString commentForFile(const OptionalString& path) {
    std::int32_t version = 0;
    (void)Gestalt(gestaltSystemVersion, &version);
    return version >= version10_5 ? spotlightComment(path) : finderCommentOf(path);
}

void setCommentForFile(const OptionalString& comment, const OptionalString& path) {
    AEDesc item;
    if (!comment || MoreAEOCreateObjSpecifierFromCFString(path, &item) != noErr)
        return;
    try {
        sendComment(*comment, item);
    } catch (const NSException& exception) {
        if (exception.name() != NSCharacterConversionException)
            throw;
        NSLog(NSString(u"Can not set Comment for ") + *path);
    }
}

void copyComment(const OptionalString& source, const OptionalString& destination) {
    setCommentForFile(commentForFile(source), destination);
}

OSStatus AECopyFile(const OptionalString& source, const OptionalString& folder, bool replace) {
    if (isEmpty(source) || isEmpty(folder))
        return paramErr;
    AEDesc item;
    AEDesc target;
    AEDesc replaces;
    AppleEvent event;
    AppleEvent reply;
    OSStatus status = MoreAEOCreateObjSpecifierFromCFString(source, &item);
    if (status == noErr)
        status = MoreAEOCreateObjSpecifierFromCFString(folder, &target);
    if (status == noErr)
        status = AECreateDesc(replace ? typeTrue : typeFalse, nullptr, 0, &replaces);
    if (status == noErr)
        status =
            buildFinderRequest(kAEClone, "'----':(@),insh:(@),alrp:(@)", {&item, &target, &replaces}, &event);
    return status == noErr ? sendFinderRequest(event, reply) : status;
}

} // namespace kestrine
