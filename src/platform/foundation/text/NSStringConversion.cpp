#include "platform/foundation/text/NSStringConversion.h"

#include "platform/foundation/NSException.h"
#include "platform/foundation/text/UTF8.h"

namespace kestrine {
namespace {

/// Surrogates below U+DC80 do not stand for bytes, because bytes below 0x80 are always valid UTF-8.
bool standsForByte(char32_t unit) { return unit >= 0xdc80 && unit <= 0xdcff; }

bool hasUTF8Form(const std::u16string& text) {
    for (std::size_t i = 0; i < text.size();) {
        const char32_t codePoint = codePointAt(text, i);
        const bool isLone = isHighSurrogate(codePoint) || isLowSurrogate(codePoint);
        if (isLone && !standsForByte(codePoint))
            return false;
        i += utf16Length(codePoint);
    }
    return true;
}

} // namespace

std::string UTF8String(const NSString& text) {
    if (!hasUTF8Form(text.utf16()))
        throw NSException(NSCharacterConversionException, "the string contains a lone surrogate");
    return text.utf8();
}

std::string fileSystemRepresentation(const NSString& path) {
    std::string bytes = UTF8String(path);
    if (bytes.find('\0') != std::string::npos)
        throw NSException(NSCharacterConversionException, "a path cannot contain a zero character");
    return bytes;
}

} // namespace kestrine
