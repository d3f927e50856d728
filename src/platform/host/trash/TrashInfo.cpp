#include "platform/host/trash/TrashInfo.h"

#include "platform/host/files/PathParts.h"

#include <charconv>

namespace kestrine {

namespace {

bool isUnreserved(char byte) {
    constexpr std::string_view marks = "-_.!~*'()/+";
    return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') || (byte >= '0' && byte <= '9')
           || marks.find(byte) != std::string_view::npos;
}

std::string localTime(std::time_t when) {
    ::tzset();
    std::tm parts{};
    ::localtime_r(&when, &parts);
    char text[40];
    return {text, std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S", &parts)};
}

/// A percent sign without two hexadecimal digits stands for itself.
std::string percentDecoded(std::string_view text) {
    std::string bytes;
    for (std::size_t i = 0; i < text.size(); ++i) {
        unsigned char byte = 0;
        const char *first = text.data() + i + 1, *last = first + 2;
        const bool isCode =
            text[i] == '%' && i + 2 < text.size() && std::from_chars(first, last, byte, 16).ptr == last;
        bytes += isCode ? static_cast<char>(byte) : text[i];
        i += isCode ? 2 : 0;
    }
    return bytes;
}

} // namespace

std::string trashName(const std::string& original, unsigned attempt, std::size_t maxLength) {
    return nameWithAddition(original, attempt > 1 ? "." + std::to_string(attempt) : "", maxLength);
}

std::string percentEncoded(std::string_view bytes) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string text;
    for (const char byte : bytes) {
        if (isUnreserved(byte))
            text += byte;
        else
            (text += '%').append({digits[static_cast<unsigned char>(byte) >> 4], digits[byte & 15]});
    }
    return text;
}

std::optional<std::string> originalPathIn(std::string_view trashInfo) {
    constexpr std::string_view key = "\nPath=";
    const std::size_t found = trashInfo.find(key);
    if (found == std::string_view::npos)
        return std::nullopt;
    const std::string_view rest = trashInfo.substr(found + key.size());
    return percentDecoded(rest.substr(0, rest.find('\n')));
}

std::string trashInfoText(const std::string& originalPath, std::time_t when) {
    return "[Trash Info]\nPath=" + percentEncoded(originalPath) + "\nDeletionDate=" + localTime(when) + "\n";
}

} // namespace kestrine
