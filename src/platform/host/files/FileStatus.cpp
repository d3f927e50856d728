#include "platform/host/files/FileStatus.h"

#include "platform/host/files/PathParts.h"

#include <cerrno>
#include <sys/stat.h>

namespace kestrine {

bool itemExists(const std::string& path) {
    struct stat status {};
    return checkPath(path) && ::stat(path.c_str(), &status) == 0;
}

bool folderExists(const std::string& path) {
    struct stat status {};
    return checkPath(path) && ::stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

bool isAbsent(const std::string& path) {
    struct stat status {};
    return !checkPath(path) || (::stat(path.c_str(), &status) != 0 && (errno == ENOENT || errno == ENOTDIR));
}

bool isTaken(const std::string& path) {
    struct stat status {};
    return checkPath(path) && ::lstat(path.c_str(), &status) == 0;
}

} // namespace kestrine
