#include "platform/host/trash/TrashInfo.h"

#include "platform/host/files/PathParts.h"

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

std::string trashInfoText(const std::string& originalPath, std::time_t when) {
    return "[Trash Info]\nPath=" + percentEncoded(originalPath) + "\nDeletionDate=" + localTime(when) + "\n";
}

} // namespace kestrine
