#include "kestrinectl/Lines.h"

#include "platform/foundation/text/UTF8.h"
#include "platform/host/process/StandardStreams.h"

#include <array>
#include <cstdio>
#include <filesystem>
#include <iostream>

namespace kestrine {

namespace {

struct ShortEscape {
    char16_t unit;
    const char* text;
};
constexpr ShortEscape shortEscapes[] = {{u'\n', "\\n"}, {u'\r', "\\r"}, {u'\t', "\\t"}};

/// C0, DEL and C1.
bool isControl(char16_t unit) { return unit < 0x20 || (unit >= 0x7f && unit < 0xa0); }

/// A byte that is not UTF-8 is the surrogate U+DC00 plus that byte.
bool isStrayByte(std::u16string_view text, std::size_t index) {
    const bool isSecondOfPair = index > 0 && isHighSurrogate(text[index - 1]);
    return isLowSurrogate(text[index]) && !isSecondOfPair;
}

std::string escapeFor(char16_t unit) {
    for (const ShortEscape& escape : shortEscapes)
        if (escape.unit == unit)
            return escape.text;
    std::array<char, 8> text{};
    std::snprintf(text.data(), text.size(), "\\x%02x", unit & 0xffU);
    return text.data();
}

std::string shownOn(int descriptor, std::string_view text) {
    return isTerminal(descriptor) ? escapedText(text) : std::string(text);
}

} // namespace

void printLine(std::string_view line) { std::cout << shownOn(standardOutput, line) << "\n" << std::flush; }

void printMessage(std::string_view line) {
    std::cerr << "kestrinectl: " << shownOn(standardError, line) << "\n";
}

std::string escapedText(std::string_view text) {
    const std::u16string units = utf16FromUTF8(text);
    std::string result;
    std::u16string plain;
    for (std::size_t i = 0; i < units.size(); ++i) {
        if (!isControl(units[i]) && !isStrayByte(units, i)) {
            plain += units[i];
            continue;
        }
        result += utf8FromUTF16(plain) + escapeFor(units[i]);
        plain.clear();
    }
    return result + utf8FromUTF16(plain);
}

std::string shownPath(const std::string& path) {
    std::filesystem::path result;
    for (const std::filesystem::path& step : std::filesystem::path(path))
        if (step != "." && !step.empty())
            result /= step;
    if (result.empty())
        return path.empty() ? "" : ".";
    const bool needsDot = path.starts_with("./") && result.native().starts_with('-');
    return needsDot ? "./" + result.native() : result.native();
}

} // namespace kestrine
