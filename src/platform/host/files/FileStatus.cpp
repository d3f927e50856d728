#include "platform/host/files/FileStatus.h"

#include "platform/host/files/FileDescriptor.h"
#include "platform/host/files/PathParts.h"

#include <cerrno>
#include <sys/stat.h>

namespace kestrine {

bool itemExists(const std::string& path) {
    struct stat status {};
    return checkPath(path) && ::stat(path.c_str(), &status) == 0;
}

std::string existingPartOf(std::string path) {
    while (!itemExists(path) && path != "/" && path != ".")
        path = folderOf(path);
    return path;
}

bool folderExists(const std::string& path) {
    struct stat status {};
    return checkPath(path) && ::stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

bool specialFileExists(const std::string& path) {
    struct stat status {};
    return checkPath(path) && ::stat(path.c_str(), &status) == 0 && !S_ISREG(status.st_mode)
           && !S_ISDIR(status.st_mode);
}

bool isAbsent(const std::string& path) {
    struct stat status {};
    return !checkPath(path) || (::stat(path.c_str(), &status) != 0 && (errno == ENOENT || errno == ENOTDIR));
}

bool isTaken(const std::string& path) {
    struct stat status {};
    return checkPath(path) && ::lstat(path.c_str(), &status) == 0;
}

Result<void> checkNameIsPossible(const std::string& path) {
    TRY(checkPath(path));
    struct stat status {};
    if (::lstat(path.c_str(), &status) != 0 && errno == ENAMETOOLONG)
        return systemFailure("cannot create " + path);
    return {};
}

} // namespace kestrine
