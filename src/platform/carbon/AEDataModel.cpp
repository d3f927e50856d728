#include "platform/carbon/AEDataModel.h"

#include "platform/carbon/Coercions.h"
#include "platform/carbon/DescriptorData.h"

#include <algorithm>
#include <cstring>

namespace kestrine {

OSErr AECreateDesc(DescType type, const void* data, Size size, AEDesc* result) {
    if (result == nullptr)
        return paramErr;
    *result = {};
    if (size < 0 || (size > 0 && (data == nullptr || type == typeNull)))
        return paramErr;
    const auto* first = static_cast<const std::uint8_t*>(data);
    *result = descriptorOf(type, size == 0 ? Bytes() : Bytes(first, first + size));
    return noErr;
}

OSErr AEDisposeDesc(AEDesc* desc) {
    if (desc == nullptr)
        return paramErr;
    if (desc->descriptorType == typeNull && desc->dataHandle != nullptr)
        return errAENotAEDesc;
    *desc = {};
    return noErr;
}

OSErr AECoerceDesc(const AEDesc* desc, DescType type, AEDesc* result) {
    const AEDesc source = desc == nullptr ? AEDesc() : *desc; // `result` may be the same object
    if (result != nullptr)
        *result = {};
    if (desc == nullptr || result == nullptr)
        return paramErr;
    std::optional<AEDesc> made = coerced(source, type);
    if (!made)
        return errAECoercionFail;
    *result = *std::move(made);
    return noErr;
}

Size AEGetDescDataSize(const AEDesc* desc) {
    return desc == nullptr ? 0 : static_cast<Size>(dataOf(*desc).size());
}

OSErr AEGetDescData(const AEDesc* desc, void* data, Size maximum) {
    if (desc == nullptr || maximum < 0 || (data == nullptr && maximum > 0))
        return paramErr;
    const Size size = std::min(maximum, AEGetDescDataSize(desc));
    if (size > 0)
        std::memcpy(data, dataOf(*desc).data(), static_cast<std::size_t>(size));
    return noErr;
}

} // namespace kestrine
