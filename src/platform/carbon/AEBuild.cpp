#include "platform/carbon/AEBuild.h"

#include "platform/carbon/EventParameters.h"
#include "platform/carbon/ParameterText.h"

namespace kestrine {

OSStatus AEBuildAppleEvent(AEEventClass eventClass, AEEventID eventID, DescType addressType,
                           const void* address, Size addressSize, AEReturnID returnID,
                           AETransactionID transactionID, AppleEvent* result, AEBuildError* error,
                           const char* text, std::initializer_list<const AEDesc*> descriptors) {
    if (error != nullptr)
        *error = {};
    if (result != nullptr)
        *result = {};
    if (result == nullptr || text == nullptr)
        return paramErr;
    ParameterTextOutcome outcome = readParameterText(text, descriptors);
    if (error != nullptr)
        *error = outcome.error;
    AEAddressDesc target;
    if (outcome.status == noErr)
        outcome.status = AECreateDesc(addressType, address, addressSize, &target);
    if (outcome.status == noErr)
        outcome.status = AECreateAppleEvent(eventClass, eventID, &target, returnID, transactionID, result);
    if (outcome.status == noErr)
        outcome.status = setParameters(*result, outcome.parameters);
    return outcome.status;
}

} // namespace kestrine
