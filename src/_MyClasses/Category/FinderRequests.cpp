#include "_MyClasses/Category/FinderRequests.h"

#include "platform/carbon/AEBuild.h"
#include "platform/carbon/FinderEvents.h"

namespace kestrine {

OSStatus buildFinderRequest(AEEventID eventID, const char* text,
                            std::initializer_list<const AEDesc*> descriptors, AppleEvent* event) {
    return AEBuildAppleEvent(kAECoreSuite, eventID, typeApplSignature, &finderSignature,
                             sizeof finderSignature, kAutoGenerateReturnID, kAnyTransactionID, event, nullptr,
                             text, descriptors);
}

OSStatus sendFinderRequest(const AppleEvent& event, AppleEvent& reply) {
    return AESendMessage(&event, &reply, kAEWaitReply, kNoTimeOut);
}

} // namespace kestrine
