#include "platform/carbon/DescriptorData.h"

#include <cstring>

namespace kestrine {

AEDesc descriptorOf(DescType type, Bytes data) {
    if (data.empty())
        return {type, nullptr};
    return {type, std::make_shared<const Bytes>(std::move(data))};
}

ByteView dataOf(const AEDesc& desc) {
    return desc.dataHandle == nullptr ? ByteView() : ByteView(*desc.dataHandle);
}

AEDesc unicodeTextDescriptor(const NSString& text) {
    const std::u16string& units = text.utf16();
    const auto* first = reinterpret_cast<const std::uint8_t*>(units.data());
    return descriptorOf(typeUnicodeText, Bytes(first, first + units.size() * sizeof(UniChar)));
}

NSString unicodeTextOf(const AEDesc& desc) {
    const ByteView data = dataOf(desc);
    std::u16string text(data.size() / sizeof(UniChar), u'\0');
    if (!text.empty())
        std::memcpy(text.data(), data.data(), text.size() * sizeof(UniChar));
    return text;
}

AEDesc codeDescriptor(DescType type, FourCharCode code) {
    const auto* first = reinterpret_cast<const std::uint8_t*>(&code);
    return descriptorOf(type, Bytes(first, first + sizeof code));
}

FourCharCode codeOf(const AEDesc& desc) {
    FourCharCode code = 0;
    if (dataOf(desc).size() == sizeof code)
        std::memcpy(&code, dataOf(desc).data(), sizeof code);
    return code;
}

} // namespace kestrine
