#include "platform/host/files/ExclusiveRename.h"

#include "platform/host/files/FileDescriptor.h"
#include "platform/host/files/Folders.h"
#include "platform/host/files/PathParts.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

namespace kestrine {

namespace {

bool exclusiveRenameIsMissing(int error) { return error == EINVAL || error == ENOSYS || error == EOPNOTSUPP; }

/// EPERM comes from file systems without hard links, and from the kernel for links to files of other users.
bool hardLinkIsMissing(int error) {
    return error == EPERM || error == ENOSYS || error == EOPNOTSUPP || error == EMLINK;
}

int renameExclusively(const FolderEntry& from, const FolderEntry& to) {
    return ::renameat2(from.folder, from.name.c_str(), to.folder, to.name.c_str(), RENAME_NOREPLACE) == 0
               ? 0
               : errno;
}

/// Whether `aside` is what was linked: the item seen before, or what `to` shows if that was replaced before
/// the link. Other processes may have renamed `to` again, so it does not have to show the item.
bool isLinkedItem(const FolderEntry& aside, const struct stat& before, const FolderEntry& to) {
    const Result<struct stat> found = statusOf(aside), linked = statusOf(to);
    return found && (isSameItem(*found, before) || (linked && isSameItem(*found, *linked)));
}

/// Another process may have put a new file under the old name since the link was made. That one stays.
int linkThenUnlink(const FolderEntry& from, const FolderEntry& to, const struct stat& before) {
    if (::linkat(from.folder, from.name.c_str(), to.folder, to.name.c_str(), 0) != 0)
        return errno;
    const FolderEntry aside{from.folder, temporaryName()};
    int error = setAside(from, aside);
    if (error == 0 && !isLinkedItem(aside, before, to)) {
        (void)putBack(aside, from);
        return 0;
    }
    if (error == 0 && ::unlinkat(aside.folder, aside.name.c_str(), 0) != 0) {
        error = errno;
        (void)putBack(aside, from);
    }
    if (error != 0)
        ::unlinkat(to.folder, to.name.c_str(), 0);
    return error;
}

int reserve(const FolderEntry& entry, bool asFolder) {
    if (asFolder)
        return ::mkdirat(entry.folder, entry.name.c_str(), 0700) == 0 ? 0 : errno;
    const FileDescriptor reservation(
        ::openat(entry.folder, entry.name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
    return reservation.isOpen() ? 0 : errno;
}

int renameOverReservation(const FolderEntry& from, const FolderEntry& to, bool isFolder) {
    if (const int error = reserve(to, isFolder); error != 0)
        return error;
    if (::renameat(from.folder, from.name.c_str(), to.folder, to.name.c_str()) == 0)
        return 0;
    const int error = errno;
    ::unlinkat(to.folder, to.name.c_str(), isFolder ? AT_REMOVEDIR : 0);
    return error;
}

} // namespace

int renameWithoutReplacing(const FolderEntry& from, const FolderEntry& to, RenameMechanisms& mechanisms) {
    if (mechanisms.exclusiveRename) {
        const int error = renameExclusively(from, to);
        if (!exclusiveRenameIsMissing(error))
            return error;
        mechanisms.exclusiveRename = false;
    }
    struct stat status {};
    if (::fstatat(from.folder, from.name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0)
        return errno;
    const bool isFolder = S_ISDIR(status.st_mode);
    if (mechanisms.hardLink && !isFolder) {
        const int error = linkThenUnlink(from, to, status);
        if (!hardLinkIsMissing(error))
            return error;
        mechanisms.hardLink = false;
    }
    return renameOverReservation(from, to, isFolder);
}

int setAside(const FolderEntry& place, const FolderEntry& aside) {
    return ::renameat(place.folder, place.name.c_str(), aside.folder, aside.name.c_str()) == 0 ? 0 : errno;
}

int putBack(const FolderEntry& aside, const FolderEntry& place) {
    const std::size_t maxLength = maxNameLengthIn(place.folder);
    RenameMechanisms mechanisms;
    FolderEntry back = place;
    int error = renameWithoutReplacing(aside, back, mechanisms);
    for (unsigned attempt = 2; error == EEXIST; ++attempt) {
        back.name = nameWithAddition(place.name, "." + std::to_string(attempt), maxLength);
        error = renameWithoutReplacing(aside, back, mechanisms);
    }
    return error;
}

} // namespace kestrine
