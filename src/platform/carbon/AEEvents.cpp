#include "platform/carbon/AEEvents.h"

#include "platform/carbon/DescriptorData.h"
#include "platform/carbon/EventParameters.h"
#include "platform/carbon/RecordFields.h"

#include <array>
#include <atomic>

namespace kestrine {
namespace {

// An event is a record that contains two records.
constexpr AEKeyword attributes = fourCharacterCode("attr");
constexpr AEKeyword parameters = fourCharacterCode("parm");

AEReturnID nextReturnID() {
    static std::atomic<std::uint16_t> last = 0;
    return static_cast<AEReturnID>(++last & 0x7FFF); // never -1, which requests an automatic ID
}

template <class Number>
AEDesc numberDescriptor(DescType type, Number number) {
    const auto* first = reinterpret_cast<const std::uint8_t*>(&number);
    return descriptorOf(type, Bytes(first, first + sizeof number));
}

OSErr getPart(const AppleEvent& event, AEKeyword part, AERecord& found) {
    if (event.descriptorType != typeAppleEvent)
        return errAENotAppleEvent;
    return getField(event, part, found);
}

OSErr getDesc(const AppleEvent* event, AEKeyword part, AEKeyword key, DescType type, AEDesc* result) {
    if (result != nullptr)
        *result = {};
    if (event == nullptr || result == nullptr)
        return paramErr;
    AERecord fields;
    AEDesc found;
    OSErr status = getPart(*event, part, fields);
    if (status == noErr)
        status = getField(fields, key, found);
    return status == noErr ? AECoerceDesc(&found, type, result) : status;
}

} // namespace

OSErr AECreateAppleEvent(AEEventClass eventClass, AEEventID eventID, const AEAddressDesc* target,
                         AEReturnID returnID, AETransactionID transactionID, AppleEvent* result) {
    if (result != nullptr)
        *result = {};
    if (target == nullptr || result == nullptr)
        return paramErr;
    struct Attribute {
        AEKeyword key;
        AEDesc value;
    };
    const AEReturnID madeID = returnID == kAutoGenerateReturnID ? nextReturnID() : returnID;
    const std::array<Attribute, 5> values{{
        {keyEventClassAttr, codeDescriptor(typeType, eventClass)},
        {keyEventIDAttr, codeDescriptor(typeType, eventID)},
        {keyAddressAttr, *target},
        {keyReturnIDAttr, numberDescriptor(typeShortInteger, madeID)},
        {keyTransactionIDAttr, numberDescriptor(typeLongInteger, transactionID)},
    }};
    AERecord fields{typeAERecord, nullptr};
    AppleEvent event{typeAppleEvent, nullptr};
    OSErr status = noErr;
    for (const Attribute& value : values)
        if (status == noErr)
            status = putField(fields, value.key, value.value);
    if (status == noErr)
        status = putField(event, attributes, fields);
    if (status == noErr)
        status = putField(event, parameters, {typeAERecord, nullptr});
    if (status == noErr)
        *result = std::move(event);
    return status;
}

OSErr setParameters(AppleEvent& event, const AERecord& fields) {
    if (event.descriptorType != typeAppleEvent)
        return errAENotAppleEvent;
    return putField(event, parameters, fields);
}

OSErr AEPutParamDesc(AppleEvent* event, AEKeyword key, const AEDesc* value) {
    if (event == nullptr || value == nullptr)
        return paramErr;
    AERecord fields;
    OSErr status = getPart(*event, parameters, fields);
    if (status == noErr)
        status = putField(fields, key, *value);
    return status == noErr ? setParameters(*event, fields) : status;
}

OSErr AEGetParamDesc(const AppleEvent* event, AEKeyword key, DescType type, AEDesc* result) {
    return getDesc(event, parameters, key, type, result);
}

OSErr AEGetParamPtr(const AppleEvent* event, AEKeyword key, DescType type, DescType* actualType, void* data,
                    Size maximum, Size* actualSize) {
    AEDesc found;
    OSErr status = AEGetParamDesc(event, key, type, &found);
    if (status == noErr)
        status = AEGetDescData(&found, data, maximum);
    if (status != noErr)
        return status;
    if (actualType != nullptr)
        *actualType = found.descriptorType;
    if (actualSize != nullptr)
        *actualSize = AEGetDescDataSize(&found);
    return noErr;
}

OSErr AEGetAttributeDesc(const AppleEvent* event, AEKeyword key, DescType type, AEDesc* result) {
    return getDesc(event, attributes, key, type, result);
}

} // namespace kestrine
