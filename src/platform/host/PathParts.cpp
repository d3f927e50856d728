#include "platform/host/PathParts.h"

namespace kestrine {

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

Result<void> checkPath(const std::string& path) {
    if (path.empty())
        return Failure{Reason::malformed, "the path is empty"};
    if (path.find('\0') != std::string::npos)
        return Failure{Reason::malformed, "the path has a zero byte in it"};
    return {};
}

} // namespace kestrine
