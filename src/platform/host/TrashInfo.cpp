#include "platform/host/TrashInfo.h"

#include <algorithm>

namespace kestrine {

namespace {

/// Longer ones are no extensions but names with a dot somewhere.
constexpr std::size_t longestExtension = 32;

/// Where the extension begins (its dot included); the dot of a hidden file begins none.
std::size_t extensionBegin(const std::string& name) {
    const std::size_t dot = name.rfind('.');
    const bool isExtension = dot != std::string::npos && dot > 0 && name.size() - dot <= longestExtension;
    return isExtension ? dot : name.size();
}

bool continuesCharacter(char byte) { return (static_cast<unsigned char>(byte) & 0xC0) == 0x80; }

std::string shortened(const std::string& text, std::size_t longest) {
    if (text.size() <= longest)
        return text;
    constexpr std::size_t mostContinuations = 3; // of a UTF-8 character
    std::size_t end = longest;
    while (end > 0 && longest - end < mostContinuations && continuesCharacter(text[end]))
        --end;
    return text.substr(0, continuesCharacter(text[end]) ? longest : end);
}

bool staysAsItIs(char byte) {
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

std::string trashName(const std::string& original, unsigned attempt, std::size_t longest) {
    const std::size_t dot = extensionBegin(original);
    const std::string number = attempt > 1 ? "." + std::to_string(attempt) : "";
    const std::string end = number + original.substr(dot);
    return shortened(original.substr(0, dot), longest - std::min(longest, end.size())) + end;
}

std::string percentEncoded(std::string_view bytes) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string text;
    for (const char byte : bytes) {
        if (staysAsItIs(byte))
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
