#include "platform/carbon/AESending.h"

#include "platform/carbon/DescriptorData.h"
#include "platform/carbon/FinderEvents.h"

namespace kestrine {
namespace {

bool addressesFinder(const AppleEvent& event) {
    AEAddressDesc address;
    return AEGetAttributeDesc(&event, keyAddressAttr, typeApplSignature, &address) == noErr
           && codeOf(address) == finderSignature;
}

AEReturnID returnIDOf(const AppleEvent& event) {
    AEDesc found;
    AEReturnID returnID = 0;
    if (AEGetAttributeDesc(&event, keyReturnIDAttr, typeShortInteger, &found) == noErr)
        (void)AEGetDescData(&found, &returnID, sizeof returnID);
    return returnID;
}

OSErr putAnswer(AppleEvent& reply, const FinderAnswer& answer) {
    if (!answer.error) {
        const bool isEmpty = answer.directObject.descriptorType == typeNull;
        return isEmpty ? OSErr{noErr} : AEPutParamDesc(&reply, keyDirectObject, &answer.directObject);
    }
    const auto number = static_cast<OSErr>(answer.error->number); // FinderErrors.cpp checks the range
    AEDesc numberDesc;
    OSErr status = AECreateDesc(typeShortInteger, &number, sizeof number, &numberDesc);
    if (status == noErr)
        status = AEPutParamDesc(&reply, keyErrorNumber, &numberDesc);
    const AEDesc text = unicodeTextDescriptor(answer.error->message);
    return status == noErr ? AEPutParamDesc(&reply, keyErrorString, &text) : status;
}

OSErr makeReply(const AppleEvent& event, const FinderAnswer& answer, AppleEvent& reply) {
    const AEAddressDesc sender;
    AppleEvent made;
    OSErr status =
        AECreateAppleEvent(kCoreEventClass, kAEAnswer, &sender, returnIDOf(event), kAnyTransactionID, &made);
    if (status == noErr)
        status = putAnswer(made, answer);
    if (status == noErr)
        reply = std::move(made);
    return status;
}

} // namespace

OSErr AESend(const AppleEvent* event, AppleEvent* reply, AESendMode mode, AESendPriority, std::int32_t,
             const AEIdleUPP& idle) {
    if (reply != nullptr)
        *reply = {};
    const bool waits = mode == kAEWaitReply;
    if (event == nullptr || (waits ? reply == nullptr : mode != kAENoReply))
        return paramErr;
    if (event->descriptorType != typeAppleEvent)
        return errAENotAppleEvent;
    if (!addressesFinder(*event))
        return procNotFound;
    const FinderAnswer answer = answerFinderEvent(*event);
    if (!waits)
        return noErr;
    return idle && idle() ? static_cast<OSErr>(errAEWaitCanceled) : makeReply(*event, answer, *reply);
}

OSStatus AESendMessage(const AppleEvent* event, AppleEvent* reply, AESendMode mode,
                       std::int32_t timeOutInTicks) {
    return AESend(event, reply, mode, kAENormalPriority, timeOutInTicks, nullptr);
}

} // namespace kestrine
