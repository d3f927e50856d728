// The input is a parameter string up to the first zero byte, then the bytes of descriptors of every kind. All
// of it is read or refused. A string that was read gives an event with its fields. No event is sent.
#include "platform/carbon/AEBuild.h"
#include "platform/carbon/Coercions.h"
#include "platform/carbon/DescriptorData.h"
#include "platform/carbon/FinderObjects.h"
#include "platform/carbon/ParameterText.h"
#include "platform/carbon/RecordFields.h"

#include <algorithm>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    using namespace kestrine;
    const std::uint8_t* end = std::find(bytes, bytes + size, 0);
    const std::string text(bytes, end);
    const Bytes data(end == bytes + size ? end : end + 1, bytes + size);

    AEDesc record = descriptorOf(typeObjectSpecifier, data);
    AppleEvent event;
    AEBuildError error;
    const OSStatus status =
        AEBuildAppleEvent(1, 2, typeApplSignature, "MACS", 4, kAutoGenerateReturnID, kAnyTransactionID,
                          &event, &error, text.c_str(), {&record, &record});
    const AEDesc* const descriptors[] = {&record, &record};
    const bool isBuilt = readParameterText(text, descriptors).status == noErr;
    if (isBuilt != (status == noErr) || error.fErrorPos > text.size())
        std::abort();

    AEDesc found;
    if (isBuilt && AEGetParamDesc(&event, keyDirectObject, typeWildCard, &found) == noErr)
        (void)propertyOf(found);
    (void)getField(record, keyDirectObject, found);
    if (putField(record, keyDirectObject, found) == noErr
        && getField(record, keyDirectObject, found) != noErr)
        std::abort();
    for (const DescType type : {typeUnicodeText, typeText, typeAlias, typeObjectSpecifier, typeAppleEvent}) {
        const AEDesc desc = descriptorOf(type, data);
        (void)coerced(desc, typeUnicodeText);
        (void)coerced(desc, typeText);
        (void)AEGetParamDesc(&desc, keyDirectObject, typeText, &found);
        (void)pathOfObject(desc);
        (void)propertyOf(desc);
    }
    return 0;
}
