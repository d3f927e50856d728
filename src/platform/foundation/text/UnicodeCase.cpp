#include "platform/foundation/text/UnicodeCase.h"

#include "platform/foundation/text/UnicodeLibrary.h"

#include <algorithm>
#include <limits>

namespace kestrine {

namespace {

constexpr const char* caseLocale = "";
constexpr std::uint32_t defaultFolding = 0;

bool isASCII(std::u16string_view text) {
    return std::all_of(text.begin(), text.end(), [](char16_t unit) { return unit < 0x80; });
}

char16_t upperASCII(char16_t unit) {
    return unit >= u'a' && unit <= u'z' ? static_cast<char16_t>(unit - 32) : unit;
}
char16_t lowerASCII(char16_t unit) {
    return unit >= u'A' && unit <= u'Z' ? static_cast<char16_t>(unit + 32) : unit;
}

std::u16string mapped(std::u16string_view text, char16_t (*mapUnit)(char16_t)) {
    std::u16string result(text);
    std::transform(result.begin(), result.end(), result.begin(), mapUnit);
    return result;
}

/// Calls ICU twice, first for the length and then for the text. Empty without ICU or after an error.
std::u16string mappedByLibrary(std::u16string_view text, UnicodeCaseFunctions::MapText* map) {
    if (!map || text.size() > std::numeric_limits<std::int32_t>::max())
        return {};
    const auto length = static_cast<std::int32_t>(text.size());
    int errorCode = 0;
    const std::int32_t needed = map(nullptr, 0, text.data(), length, caseLocale, &errorCode);
    std::u16string result(static_cast<std::size_t>(std::max(needed, 0)), u'\0');
    errorCode = 0;
    map(result.data(), needed, text.data(), length, caseLocale, &errorCode);
    return errorCode > 0 ? std::u16string() : result;
}

} // namespace

std::u16string upperCased(std::u16string_view text) {
    std::u16string result =
        isASCII(text) ? std::u16string() : mappedByLibrary(text, unicodeCaseFunctions().toUpper);
    return result.empty() ? mapped(text, upperASCII) : result;
}

std::u16string lowerCased(std::u16string_view text) {
    std::u16string result =
        isASCII(text) ? std::u16string() : mappedByLibrary(text, unicodeCaseFunctions().toLower);
    return result.empty() ? mapped(text, lowerASCII) : result;
}

char32_t caseFolded(char32_t codePoint) {
    if (codePoint < 0x80)
        return lowerASCII(static_cast<char16_t>(codePoint));
    const auto fold = unicodeCaseFunctions().fold;
    return fold ? static_cast<char32_t>(fold(static_cast<std::int32_t>(codePoint), defaultFolding))
                : codePoint;
}

} // namespace kestrine
