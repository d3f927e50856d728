#include "platform/carbon/Coercions.h"

#include "platform/carbon/DescriptorData.h"

#include <array>

namespace kestrine {
namespace {

std::optional<AEDesc> textFromUnicode(const AEDesc& desc) {
    const std::string text = unicodeTextOf(desc).utf8();
    return descriptorOf(typeText, Bytes(text.begin(), text.end()));
}

std::optional<AEDesc> unicodeFromText(const AEDesc& desc) {
    const ByteView data = dataOf(desc);
    return unicodeTextDescriptor(
        NSString::fromUTF8({reinterpret_cast<const char*>(data.data()), data.size()}));
}

std::optional<AEDesc> booleanFromTrue(const AEDesc&) { return descriptorOf(typeBoolean, {1}); }

std::optional<AEDesc> booleanFromFalse(const AEDesc&) { return descriptorOf(typeBoolean, {0}); }

std::optional<AEDesc> typeFromEnumerated(const AEDesc& desc) { return AEDesc{typeType, desc.dataHandle}; }

std::optional<AEDesc> enumeratedFromType(const AEDesc& desc) {
    return AEDesc{typeEnumerated, desc.dataHandle};
}

struct Coercion {
    DescType from;
    DescType to;
    std::optional<AEDesc> (*convert)(const AEDesc&);
};

constexpr std::array<Coercion, 6> coercions{{
    {typeUnicodeText, typeText, textFromUnicode},
    {typeText, typeUnicodeText, unicodeFromText},
    {typeTrue, typeBoolean, booleanFromTrue},
    {typeFalse, typeBoolean, booleanFromFalse},
    {typeEnumerated, typeType, typeFromEnumerated},
    {typeType, typeEnumerated, enumeratedFromType},
}};

} // namespace

std::optional<AEDesc> coerced(const AEDesc& desc, DescType type) {
    if (desc.descriptorType == typeNull)
        return AEDesc();
    if (type == desc.descriptorType || type == typeWildCard)
        return desc;
    for (const Coercion& coercion : coercions)
        if (coercion.from == desc.descriptorType && coercion.to == type)
            return coercion.convert(desc);
    return std::nullopt;
}

} // namespace kestrine
