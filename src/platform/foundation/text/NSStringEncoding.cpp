#include "platform/foundation/text/NSStringEncoding.h"

#include "platform/foundation/text/CodePageText.h"
#include "platform/foundation/text/NonLossyASCII.h"
#include "platform/foundation/text/UTF8.h"

namespace kestrine {

namespace {

constexpr char16_t byteOrderMark = 0xfeff;
constexpr char16_t swappedByteOrderMark = 0xfffe;

bool hasLoneSurrogate(std::u16string_view text) {
    for (std::size_t i = 0; i < text.size();) {
        const char32_t codePoint = codePointAt(text, i);
        if (isHighSurrogate(codePoint) || isLowSurrogate(codePoint))
            return true;
        i += utf16Length(codePoint);
    }
    return false;
}

/// The text without its byte-order mark; nil if it is malformed.
OptionalString wellFormed(std::u16string_view text) {
    if (hasLoneSurrogate(text))
        return std::nullopt;
    if (text.starts_with(byteOrderMark))
        text.remove_prefix(1);
    return NSString(std::u16string(text));
}

/// utf16FromUTF8() gives lone surrogates for invalid bytes.
OptionalString textFromUTF8(ByteView bytes) {
    return wellFormed(utf16FromUTF8({reinterpret_cast<const char*>(bytes.data()), bytes.size()}));
}

OptionalString textFromUTF16(ByteView bytes) {
    if (bytes.size() % 2 != 0)
        return std::nullopt;
    const bool isLittleEndian = bytes.size() >= 2 && (bytes[0] << 8 | bytes[1]) == swappedByteOrderMark;
    std::u16string text;
    for (std::size_t i = 0; i < bytes.size(); i += 2) {
        const int high = bytes[isLittleEndian ? i + 1 : i];
        const int low = bytes[isLittleEndian ? i : i + 1];
        text += static_cast<char16_t>(high << 8 | low);
    }
    return wellFormed(text);
}

} // namespace

OptionalString decodedText(ByteView bytes, NSStringEncoding encoding) {
    switch (encoding) {
    case NSUTF8StringEncoding:
        return textFromUTF8(bytes);
    case NSUnicodeStringEncoding:
        return textFromUTF16(bytes);
    case NSNonLossyASCIIStringEncoding:
        return textFromNonLossyASCII(bytes);
    case NSISOLatin1StringEncoding:
        return NSString(std::u16string(bytes.begin(), bytes.end()));
    default:
        return textFromCodePage(bytes, encoding);
    }
}

} // namespace kestrine
