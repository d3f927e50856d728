#include "platform/host/files/FileAttributes.h"

#include "platform/host/files/Folders.h"
#include "platform/host/files/PathParts.h"

#include <fcntl.h>
#include <unistd.h>

namespace kestrine {

namespace {

void setAttributes(int folder, const struct stat& attributes) {
    const bool hasOwner = ::fchown(folder, attributes.st_uid, attributes.st_gid) == 0;
    (void)::fchmod(folder, attributes.st_mode & (hasOwner ? 07777 : 0777));
    const timespec times[2] = {{0, UTIME_OMIT}, attributes.st_mtim};
    (void)::futimens(folder, times);
}

} // namespace

Result<struct stat> attributesOf(const std::string& path, FollowLinks follow) {
    TRY(checkPath(path));
    struct stat status {};
    const int flags = follow == FollowLinks::yes ? 0 : AT_SYMLINK_NOFOLLOW;
    if (::fstatat(AT_FDCWD, path.c_str(), &status, flags) != 0)
        return systemFailure("cannot examine " + path);
    return status;
}

Result<void> makeFolderWithAttributes(const std::string& path, const struct stat& attributes) {
    TRY(checkPath(path));
    // Other users have no access until the final mode is set.
    if (::mkdir(path.c_str(), 0700) != 0)
        return systemFailure("cannot create the folder " + path);
    const FileDescriptor folder(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (folder.isOpen())
        setAttributes(folder.number(), attributes);
    return {};
}

Result<void> makeExecutable(const std::string& path) {
    const struct stat status = TRY(attributesOf(path, FollowLinks::yes));
    const mode_t executable = (status.st_mode & 0444) >> 2;
    if (::chmod(path.c_str(), (status.st_mode & 07777) | executable) != 0)
        return systemFailure("cannot make " + path + " executable");
    return {};
}

Result<void> changeCurrentFolder(const std::string& folder) {
    TRY(checkPath(folder));
    if (::chdir(folder.c_str()) != 0)
        return systemFailure("cannot change to the folder " + folder);
    return {};
}

} // namespace kestrine
