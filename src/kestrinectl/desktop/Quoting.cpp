#include "kestrinectl/desktop/Quoting.h"

#include "kestrinectl/text/Replacement.h"
#include "platform/foundation/text/UTF8.h"

#include <string_view>

namespace kestrine {

namespace {

constexpr Replacement inSingleQuotes[] = {{'\'', "'\\''"}};
constexpr Replacement inExecQuotes[] = {
    {'"', "\\\""}, {'`', "\\`"}, {'$', "\\$"}, {'\\', "\\\\"}, {'%', "%%"}};
constexpr Replacement inKeyFiles[] = {{'\\', "\\\\"}, {'\n', "\\n"}, {'\r', "\\r"}, {'\t', "\\t"}};

constexpr std::string_view hexDigits = "0123456789ABCDEF";

bool isPlain(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '.' || c == '_'
           || c == '-';
}

/// Control characters, line separators, and what XML cannot hold.
bool isUnprintable(char32_t c) {
    return c < 0x20 || (c >= 0x7f && c < 0xa0) || c == 0x2028 || c == 0x2029 || (c & 0xfffe) == 0xfffe;
}

} // namespace

std::string shellWord(const std::string& text) { return "'" + replaced(text, inSingleQuotes) + "'"; }

std::string execArgument(const std::string& text) {
    return keyFileValue("\"" + replaced(text, inExecQuotes) + "\"");
}

std::string keyFileValue(const std::string& text) {
    std::string value = replaced(text, inKeyFiles);
    if (value.ends_with(' '))
        value.replace(value.size() - 1, 1, "\\s");
    if (value.starts_with(' '))
        value.replace(0, 1, "\\s");
    return value;
}

std::string wordOfSetName(const std::string& name) {
    std::string word;
    for (const char c : name) {
        const auto byte = static_cast<unsigned char>(c);
        if (isPlain(c) && !(c == '-' && word.empty()))
            word += c;
        else
            word += {'=', hexDigits[byte >> 4], hexDigits[byte & 15]};
    }
    return word;
}

std::optional<std::string> setNameOfWord(const std::string& word) {
    std::string name;
    for (std::size_t i = 0; i < word.size(); ++i) {
        if (word[i] != '=') {
            name += word[i];
            continue;
        }
        const std::size_t high = i + 1 < word.size() ? hexDigits.find(word[i + 1]) : hexDigits.npos;
        const std::size_t low = i + 2 < word.size() ? hexDigits.find(word[i + 2]) : hexDigits.npos;
        if (high == hexDigits.npos || low == hexDigits.npos)
            return std::nullopt;
        name += static_cast<char>(high << 4 | low);
        i += 2;
    }
    return wordOfSetName(name) == word ? std::optional(name) : std::nullopt;
}

std::optional<std::string> objectionToLabel(const std::string& name) {
    if (name.empty())
        return "the name is empty";
    const std::u16string text = utf16FromUTF8(name);
    for (std::size_t i = 0; i < text.size(); i += utf16Length(codePointAt(text, i))) {
        const char32_t c = codePointAt(text, i);
        if (isLowSurrogate(c))
            return "the name is not valid UTF-8";
        if (isUnprintable(c))
            return "the name contains a control character";
    }
    return std::nullopt;
}

} // namespace kestrine
