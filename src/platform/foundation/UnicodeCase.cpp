#include "platform/foundation/UnicodeCase.h"

#include "platform/host/DynamicLibrary.h"

#include <algorithm>
#include <limits>

namespace kestrine {

namespace {

// ICU's functions as its C interface declares them; an error code above 0 is a failure.
using MapText = std::int32_t(char16_t* into, std::int32_t capacity, const char16_t* text, std::int32_t length,
                             const char* locale, int* errorCode);
using FoldCodePoint = std::int32_t(std::int32_t codePoint, std::uint32_t options);

constexpr const char* rootLocale = "";
constexpr std::uint32_t defaultFolding = 0;

// ICU's file and functions carry the major version in their names; these are the ones that may be met.
constexpr int newestVersion = 90;
constexpr int oldestVersion = 60;

struct CaseLibrary {
    MapText* toUpper = nullptr;
    MapText* toLower = nullptr;
    FoldCodePoint* fold = nullptr;
};

CaseLibrary openCaseLibrary() {
    for (int version = newestVersion; version >= oldestVersion; version--) {
        const std::string number = std::to_string(version);
        const Result<DynamicLibrary> library = DynamicLibrary::open({("libicuuc.so." + number).c_str()});
        if (library)
            return {library->symbol<MapText>(("u_strToUpper_" + number).c_str()),
                    library->symbol<MapText>(("u_strToLower_" + number).c_str()),
                    library->symbol<FoldCodePoint>(("u_foldCase_" + number).c_str())};
    }
    return {};
}

const CaseLibrary& caseLibrary() {
    static const CaseLibrary library = openCaseLibrary();
    return library;
}

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

/// Through ICU: asked once for the length, once for the text. Nothing when ICU is missing or refuses.
std::u16string mappedByLibrary(std::u16string_view text, MapText* map) {
    if (!map || text.size() > std::numeric_limits<std::int32_t>::max())
        return {};
    const auto length = static_cast<std::int32_t>(text.size());
    int errorCode = 0;
    const std::int32_t needed = map(nullptr, 0, text.data(), length, rootLocale, &errorCode);
    std::u16string result(static_cast<std::size_t>(std::max(needed, 0)), u'\0');
    errorCode = 0;
    map(result.data(), needed, text.data(), length, rootLocale, &errorCode);
    return errorCode > 0 ? std::u16string() : result;
}

} // namespace

std::u16string upperCased(std::u16string_view text) {
    std::u16string result = isASCII(text) ? std::u16string() : mappedByLibrary(text, caseLibrary().toUpper);
    return result.empty() ? mapped(text, upperASCII) : result;
}

std::u16string lowerCased(std::u16string_view text) {
    std::u16string result = isASCII(text) ? std::u16string() : mappedByLibrary(text, caseLibrary().toLower);
    return result.empty() ? mapped(text, lowerASCII) : result;
}

char32_t caseFolded(char32_t codePoint) {
    if (codePoint < 0x80)
        return lowerASCII(static_cast<char16_t>(codePoint));
    FoldCodePoint* const fold = caseLibrary().fold;
    return fold ? static_cast<char32_t>(fold(static_cast<std::int32_t>(codePoint), defaultFolding))
                : codePoint;
}

} // namespace kestrine
