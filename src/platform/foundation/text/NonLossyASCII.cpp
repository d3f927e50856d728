#include "platform/foundation/text/NonLossyASCII.h"

#include <charconv>

namespace kestrine {

namespace {

constexpr std::size_t octalDigits = 3;
constexpr std::size_t hexadecimalDigits = 4;
constexpr unsigned largestOctal = 0377;
constexpr unsigned largestUnit = 0xffff;

/// The number in exactly `count` digits at the start of `text`.
std::optional<unsigned> number(std::string_view text, std::size_t count, int base) {
    unsigned value = 0;
    if (text.size() < count)
        return std::nullopt;
    const auto [end, error] = std::from_chars(text.data(), text.data() + count, value, base);
    return error == std::errc() && end == text.data() + count ? std::optional(value) : std::nullopt;
}

struct CodeEscape {
    std::optional<unsigned> unit;
    std::size_t length; // in bytes, with the backslash
};

/// `text` starts with a backslash.
CodeEscape escapeAt(std::string_view text) {
    if (text.substr(1, 1) == "\\")
        return {u'\\', 2};
    if (text.substr(1, 1) == "u")
        return {number(text.substr(2), hexadecimalDigits, 16), 2 + hexadecimalDigits};
    return {number(text.substr(1), octalDigits, 8), 1 + octalDigits};
}

} // namespace

std::optional<std::u16string> textFromNonLossyASCII(ByteView bytes) {
    const std::string_view rest(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    std::u16string text;
    for (std::size_t i = 0; i < bytes.size();) {
        if (bytes[i] > 0x7f)
            return std::nullopt;
        if (bytes[i] != '\\') {
            text += static_cast<char16_t>(bytes[i++]);
            continue;
        }
        const CodeEscape escape = escapeAt(rest.substr(i));
        const bool isOctal = escape.length == 1 + octalDigits;
        if (!escape.unit || *escape.unit > (isOctal ? largestOctal : largestUnit))
            return std::nullopt;
        text += static_cast<char16_t>(*escape.unit);
        i += escape.length;
    }
    return text;
}

} // namespace kestrine
