#include "platform/carbon/AEObjects.h"

#include "platform/carbon/DescriptorData.h"
#include "platform/carbon/RecordFields.h"

#include <array>

namespace kestrine {

OSErr CreateObjSpecifier(DescType desiredClass, AEDesc* container, DescType keyForm, AEDesc* keyData,
                         bool disposeInputs, AEDesc* result) {
    if (container == nullptr || keyData == nullptr || result == nullptr)
        return paramErr;
    struct Field {
        AEKeyword key;
        AEDesc value;
    };
    const std::array<Field, 4> fields{{
        {keyAEDesiredClass, codeDescriptor(typeType, desiredClass)},
        {keyAEContainer, *container},
        {keyAEKeyForm, codeDescriptor(typeEnumerated, keyForm)},
        {keyAEKeyData, *keyData},
    }};
    if (disposeInputs)
        *container = *keyData = {};
    *result = {};
    AEDesc specifier{typeObjectSpecifier, nullptr};
    for (const Field& field : fields) {
        const OSErr status = putField(specifier, field.key, field.value);
        if (status != noErr)
            return status;
    }
    *result = std::move(specifier);
    return noErr;
}

} // namespace kestrine
