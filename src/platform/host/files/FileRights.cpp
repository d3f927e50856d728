#include "platform/host/files/FileRights.h"

#include "platform/host/files/FileAttributes.h"
#include "platform/host/files/FileDescriptor.h"

#include <sys/stat.h>
#include <unistd.h>

namespace kestrine {

Result<FileRights> rightsOfFile(const std::string& path) {
    constexpr mode_t permissionBits = 0777;
    const struct stat status = TRY(attributesOf(path, FollowLinks::yes));
    return FileRights{status.st_mode & permissionBits, status.st_uid, status.st_gid};
}

/// Sets the mode after the owner, because changing the owner may clear mode bits.
Result<void> giveRights(int file, const FileRights& rights) {
    struct stat own {};
    if (::fstat(file, &own) == 0 && (own.st_uid != rights.owner || own.st_gid != rights.group)
        && ::fchown(file, rights.owner, rights.group) != 0)
        (void)(::fchown(file, static_cast<uid_t>(-1), rights.group) == 0); // one of the user's groups
    if (::fchmod(file, rights.mode) != 0)
        return systemFailure("cannot keep the permissions of the file");
    return {};
}

} // namespace kestrine
