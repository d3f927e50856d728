#include "platform/host/files/FileRights.h"

#include "platform/host/files/FileAttributes.h"
#include "platform/host/files/FileDescriptor.h"

#include <sys/stat.h>
#include <unistd.h>

namespace kestrine {

namespace {

/// Sets the group, and the owner if that is permitted. Returns whether the file has the group.
bool setGroup(int file, const FileRights& rights) {
    struct stat own {};
    const bool isKnown = ::fstat(file, &own) == 0;
    if (isKnown && own.st_uid == rights.owner && own.st_gid == rights.group)
        return true;
    return ::fchown(file, rights.owner, rights.group) == 0
           || ::fchown(file, static_cast<uid_t>(-1), rights.group) == 0 // one of the user's groups
           || (isKnown && own.st_gid == rights.group);
}

/// The mode for a file that could not get the group: its own group gets no more rights than all users have.
mode_t withoutRightsOfGroup(mode_t mode) {
    const mode_t ofOthers = mode & S_IRWXO, others = ofOthers << 3;
    return (mode & ~static_cast<mode_t>(S_IRWXG)) | (mode & others & S_IRWXG);
}

} // namespace

Result<FileRights> rightsOfFile(const std::string& path) {
    constexpr mode_t permissionBits = 0777;
    const struct stat status = TRY(attributesOf(path, FollowLinks::yes));
    return FileRights{status.st_mode & permissionBits, status.st_uid, status.st_gid};
}

/// Sets the mode after the owner, because changing the owner may clear mode bits.
Result<void> giveRights(int file, const FileRights& rights) {
    const mode_t mode = setGroup(file, rights) ? rights.mode : withoutRightsOfGroup(rights.mode);
    if (::fchmod(file, mode) != 0)
        return systemFailure("cannot keep the permissions of the file");
    return {};
}

} // namespace kestrine
