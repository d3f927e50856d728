#include "platform/carbon/FinderEvents.h"

#include "platform/carbon/DescriptorData.h"
#include "platform/carbon/FinderObjects.h"
#include "platform/finder/FinderErrors.h"
#include "platform/finder/FinderMetadata.h"

#include <array>

namespace kestrine {
namespace {

FinderAnswer failed(const FinderError& error) { return {error, {}}; }

FinderAnswer failed(OSStatus number, const NSString& message) { return failed(FinderError{number, message}); }

FinderAnswer missing(OSErr status, const char16_t* parameter) {
    return failed(status, NSString(u"cannot use the parameter ") + parameter);
}

/// The item whose comment is the direct object.
FoundObject itemOfComment(const AppleEvent& event) {
    AEDesc object;
    const OSErr status = AEGetParamDesc(&event, keyDirectObject, typeWildCard, &object);
    if (status != noErr)
        return FinderError{status, u"cannot use the direct object"};
    const std::optional<FinderProperty> property = propertyOf(object);
    if (!property || property->name != pComment)
        return FinderError{errAENoSuchObject, u"the Finder supports no property but the comment"};
    return pathOfObject(property->owner);
}

FinderAnswer getData(const AppleEvent& event) {
    const FoundObject item = itemOfComment(event);
    if (item.error)
        return failed(*item.error);
    const Result<OptionalString> comment = finderComment(item.path);
    if (!comment)
        return failed(finderError(comment.failure()));
    return {std::nullopt, unicodeTextDescriptor(comment->value_or(u""))};
}

FinderAnswer setData(const AppleEvent& event) {
    const FoundObject item = itemOfComment(event);
    if (item.error)
        return failed(*item.error);
    AEDesc text;
    const OSErr status = AEGetParamDesc(&event, keyAEData, typeUnicodeText, &text);
    if (status != noErr)
        return missing(status, u"data");
    const Result<void> set = setFinderComment(item.path, unicodeTextOf(text));
    return set ? FinderAnswer() : failed(finderError(set.failure()));
}

FoundObject itemIn(const AppleEvent& event, AEKeyword key, const char16_t* name) {
    AEDesc object;
    const OSErr status = AEGetParamDesc(&event, key, typeWildCard, &object);
    if (status != noErr)
        return *missing(status, name).error;
    return pathOfObject(object);
}

FinderAnswer clone(const AppleEvent& event) {
    const FoundObject item = itemIn(event, keyDirectObject, u"direct object");
    if (item.error)
        return failed(*item.error);
    const FoundObject folder = itemIn(event, keyAEInsertHere, u"insertion location");
    if (folder.error)
        return failed(*folder.error);
    std::uint8_t replaces = 0;
    const OSErr status = AEGetParamPtr(&event, keyASReplacing, typeBoolean, nullptr, &replaces, 1, nullptr);
    if (status != noErr && status != errAEDescNotFound)
        return missing(status, u"replacing");
    return {finderDuplicate({item.path}, folder.path, replaces != 0 ? Replacing::yes : Replacing::no), {}};
}

/// Nothing to do: no view of the files is cached.
FinderAnswer update(const AppleEvent&) { return {}; }

struct Handler {
    AEEventClass eventClass;
    AEEventID eventID;
    FinderAnswer (*answer)(const AppleEvent&);
};

constexpr std::array<Handler, 4> handlers{{
    {kAECoreSuite, kAEGetData, getData},
    {kAECoreSuite, kAESetData, setData},
    {kAECoreSuite, kAEClone, clone},
    {kAEFinderEvents, kAESync, update},
}};

FourCharCode codeAttribute(const AppleEvent& event, AEKeyword key) {
    AEDesc found;
    return AEGetAttributeDesc(&event, key, typeType, &found) == noErr ? codeOf(found) : 0;
}

} // namespace

FinderAnswer answerFinderEvent(const AppleEvent& event) {
    const AEEventClass eventClass = codeAttribute(event, keyEventClassAttr);
    const AEEventID eventID = codeAttribute(event, keyEventIDAttr);
    for (const Handler& handler : handlers)
        if (handler.eventClass == eventClass && handler.eventID == eventID)
            return handler.answer(event);
    return failed(errAEEventNotHandled, u"the Finder does not know this event");
}

} // namespace kestrine
