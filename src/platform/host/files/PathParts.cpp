#include "platform/host/files/PathParts.h"

#include <algorithm>

namespace kestrine {

namespace {

/// The limit in bytes, with the dot. If more follows the last dot, the name has no extension.
constexpr std::size_t maxExtension = 32;

/// The position of the extension's dot, or the length of the name if there is no extension. A dot at the
/// start of the name does not begin an extension.
std::size_t extensionBegin(const std::string& name) {
    const std::size_t dot = name.rfind('.');
    const bool isExtension = dot != std::string::npos && dot > 0 && name.size() - dot <= maxExtension;
    return isExtension ? dot : name.size();
}

bool continuesCharacter(char byte) { return (static_cast<unsigned char>(byte) & 0xC0) == 0x80; }

std::string shortened(const std::string& text, std::size_t maxLength) {
    if (text.size() <= maxLength)
        return text;
    constexpr std::size_t maxContinuations = 3; // of a UTF-8 character
    std::size_t end = maxLength;
    while (end > 0 && maxLength - end < maxContinuations && continuesCharacter(text[end]))
        --end;
    return text.substr(0, continuesCharacter(text[end]) ? maxLength : end);
}

} // namespace

std::string folderOf(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    if (slash == std::string::npos)
        return ".";
    const std::size_t end = path.find_last_not_of('/', slash);
    return end == std::string::npos ? "/" : path.substr(0, end + 1);
}

std::string nameOf(const std::string& path) { return path.substr(path.rfind('/') + 1); }

std::string joinedPath(const std::string& folder, const std::string& name) {
    return folder.ends_with('/') ? folder + name : folder + "/" + name;
}

std::string nameWithAddition(const std::string& name, const std::string& addition, std::size_t maxLength) {
    const std::size_t dot = extensionBegin(name);
    const std::string end = addition + name.substr(dot);
    return shortened(name.substr(0, dot), maxLength - std::min(maxLength, end.size())) + end;
}

Result<void> checkPath(const std::string& path) {
    if (path.empty())
        return Failure{Reason::malformed, "the path is empty"};
    if (path.find('\0') != std::string::npos)
        return Failure{Reason::malformed, "the path contains a zero byte"};
    return {};
}

} // namespace kestrine
