#include "_MyClasses/Class/ExifTag/ExifText.h"
#include "_MyClasses/Class/ExifTag/MacRoman.h"
#include "platform/foundation/text/UTF8.h"

#include <algorithm>

namespace kestrine {

namespace {

/// Whether text made from UTF-8 kept an invalid byte, which shows as a lone low surrogate.
bool hasInvalidByte(std::u16string_view text) {
    bool followsHighSurrogate = false;
    for (const char16_t unit : text) {
        if (isLowSurrogate(unit) && !followsHighSurrogate)
            return true;
        followsHighSurrogate = isHighSurrogate(unit);
    }
    return false;
}

NSString textFromMacRoman(ByteView bytes) {
    std::u16string text;
    for (const std::uint8_t byte : bytes)
        text.push_back(byte < 0x80 ? char16_t{byte} : macRomanUpperHalf[byte - 0x80u]);
    return text;
}

} // namespace

NSString exifTextFromBytes(ByteView bytes) {
    const auto end = std::find(bytes.begin(), bytes.end(), 0);
    const ByteView text = bytes.first(static_cast<std::size_t>(end - bytes.begin()));
    const NSString unicode =
        NSString::fromUTF8(std::string_view(reinterpret_cast<const char*>(text.data()), text.size()));
    return hasInvalidByte(unicode.utf16()) ? textFromMacRoman(text) : unicode;
}

} // namespace kestrine
