#include "kestrinectl/text/ShownText.h"

#include "platform/foundation/text/UTF8.h"

namespace kestrine {

namespace {

struct CharacterRange {
    char32_t first, last;
};

/// The control characters of ASCII and Latin-1, the line and paragraph separators, and the marks that set the
/// reading direction.
constexpr CharacterRange escapedRanges[] = {
    {0x00, 0x1f}, {0x7f, 0x9f}, {0x061c, 0x061c}, {0x200e, 0x200f}, {0x2028, 0x202e}, {0x2066, 0x2069},
};

/// UTF-16 holds a byte that is not valid UTF-8 as a surrogate that begins here.
constexpr char32_t surrogateOfByte0 = 0xdc00;

bool isEscaped(char32_t codePoint) {
    for (const auto& [first, last] : escapedRanges)
        if (codePoint >= first && codePoint <= last)
            return true;
    return false;
}

std::string hex(char32_t number, int digits) {
    std::string text;
    for (int shift = 4 * (digits - 1); shift >= 0; shift -= 4)
        text += "0123456789abcdef"[number >> shift & 15];
    return text;
}

std::string escape(char32_t codePoint) {
    switch (codePoint) {
    case '\n':
        return "\\n";
    case '\r':
        return "\\r";
    case '\t':
        return "\\t";
    default:
        return codePoint < 0x80 ? "\\x" + hex(codePoint, 2) : "\\u" + hex(codePoint, 4);
    }
}

} // namespace

std::string shownText(std::string_view bytes, bool isTerminal) {
    if (!isTerminal)
        return std::string(bytes);
    const std::u16string text = utf16FromUTF8(bytes);
    std::string shown;
    for (std::size_t i = 0; i < text.size();) {
        const char32_t codePoint = codePointAt(text, i);
        const std::size_t length = utf16Length(codePoint);
        if (isLowSurrogate(codePoint))
            shown += "\\x" + hex(codePoint - surrogateOfByte0, 2);
        else if (isEscaped(codePoint))
            shown += escape(codePoint);
        else
            shown += utf8FromUTF16(std::u16string_view(text).substr(i, length));
        i += length;
    }
    return shown;
}

} // namespace kestrine
