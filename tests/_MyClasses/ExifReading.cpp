#include "tests/_MyClasses/ExifReading.h"

#include <cstdio>
#include <string>

namespace kestrine::testing {

namespace {

template <class T>
std::string kindOf() {
    const char* letter = std::is_floating_point_v<T> ? "f" : std::is_signed_v<T> ? "i" : "u";
    return letter + std::to_string(8 * sizeof(T));
}

std::string shownNumber(const NSNumber& number) {
    const std::string kind = std::visit([]<class T>(T) { return kindOf<T>(); }, number.value());
    return kind + " " + number.stringValue();
}

std::string shownContent(const ByteBlock& bytes) {
    std::string text = "bytes";
    for (const std::uint8_t byte : bytes) {
        char hex[4];
        std::snprintf(hex, sizeof hex, " %02x", byte);
        text += hex;
    }
    return text;
}

std::string shownContent(const NSString& text) { return "text " + text.utf8(); }

std::string shownContent(const NumberList& list) {
    std::string text;
    for (const NSNumber& number : list)
        text += (text.empty() ? "" : ", ") + shownNumber(number);
    return text;
}

} // namespace

std::string shown(const TagValue* value) {
    if (!value)
        return "nil";
    return std::visit([](const auto& content) { return shownContent(content); }, *value);
}

std::string shown(const std::optional<NSNumber>& number) { return number ? shownNumber(*number) : "nil"; }

std::string shown(const TagDictionaryPointer& tags, std::string_view directory, std::uint16_t tag) {
    return shown(ExifTagReader::getTagData(tags.get(), directory, tag));
}

std::string namesIn(const TagDictionaryPointer& tags) {
    if (!tags)
        return "nil";
    std::string names;
    for (const auto& [name, directory] : *tags)
        names += (names.empty() ? "" : " ") + name;
    return names;
}

} // namespace kestrine::testing
