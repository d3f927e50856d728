#include "platform/host/files/PathParts.h"

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

std::string nameWithAddition(const std::string& name, const std::string& addition, std::size_t longest) {
    const std::size_t dot = extensionBegin(name);
    const std::string end = addition + name.substr(dot);
    return shortened(name.substr(0, dot), longest - std::min(longest, end.size())) + end;
}

Result<void> checkPath(const std::string& path) {
    if (path.empty())
        return Failure{Reason::malformed, "the path is empty"};
    if (path.find('\0') != std::string::npos)
        return Failure{Reason::malformed, "the path has a zero byte in it"};
    return {};
}

} // namespace kestrine
