#include "platform/host/files/TreeCopy.h"

#include "platform/host/files/ExclusiveRename.h"
#include "platform/host/files/FileContent.h"
#include "platform/host/files/FileCopy.h"
#include "platform/host/files/Folders.h"
#include "platform/host/files/MountPoints.h"

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace kestrine {

namespace {

/// The copy may lose attributes only if the original still has them afterwards.
AttributeLoss lossFor(Original original) {
    return original == Original::stays ? AttributeLoss::accepted : AttributeLoss::refused;
}

Result<CopiedItem> copyItem(const FolderEntry& from, const FolderEntry& to, Original original,
                            unsigned depth);

Result<void> copyChildren(int source, int target, CopiedItem& folder, Original original, unsigned depth) {
    std::vector<std::string> names = TRY(namesIn(source));
    for (const std::string& name : names) {
        CopiedItem child = TRY(copyItem({source, name}, {target, name}, original, depth + 1));
        folder.children.push_back(std::move(child));
    }
    return {};
}

Result<void> copyFolder(const FolderEntry& from, const FolderEntry& to, CopiedItem& folder, Original original,
                        unsigned depth) {
    if (depth > maxFolderDepth)
        return Failure{Reason::tooLarge, "the folders are nested too deeply"};
    if (isMountPoint(from))
        return Failure{Reason::refused, "another file system is mounted on " + from.name};
    FileDescriptor source = TRY(openSubfolder(from));
    if (::mkdirat(to.folder, to.name.c_str(), 0700) != 0)
        return systemFailure("cannot create a copy of the folder " + from.name);
    FileDescriptor target = TRY(openSubfolder(to));
    TRY(copyChildren(source.number(), target.number(), folder, original, depth));
    TRY(copyAttributes(source.number(), target.number(), folder.original, lossFor(original)));
    return syncFolder(target.number());
}

Result<CopiedItem> copyItem(const FolderEntry& from, const FolderEntry& to, Original original,
                            unsigned depth) {
    struct stat status = TRY(statusOf(from));
    if (original == Original::goes)
        TRY(checkRemovable(from.folder, status));
    CopiedItem item{from.name, status, {}};
    Result<void> copied = Failure{Reason::unsupported, from.name + " is not a file, link or folder"};
    if (S_ISREG(status.st_mode))
        copied = copyRegularFile(from, to, status, lossFor(original));
    else if (S_ISLNK(status.st_mode))
        copied = copySymbolicLink(from, to, status);
    else if (S_ISDIR(status.st_mode))
        copied = copyFolder(from, to, item, original, depth);
    TRY(copied);
    return item;
}

bool sameTime(const timespec& first, const timespec& second) {
    return first.tv_sec == second.tv_sec && first.tv_nsec == second.tv_nsec;
}

Failure changedSinceCopied(const std::string& name) {
    return {Reason::truncated, name + " changed after it was copied"};
}

/// Fails unless `entry` is still the copied item, with the same size and time.
Result<void> checkSameContent(const FolderEntry& entry, const CopiedItem& item) {
    struct stat now = TRY(statusOf(entry));
    const struct stat& then = item.original;
    if (!isSameItem(now, then) || now.st_mode != then.st_mode)
        return changedSinceCopied(item.name);
    // The time and size of a folder are not compared, because removing its children changes them.
    if (!S_ISDIR(then.st_mode) && (now.st_size != then.st_size || !sameTime(now.st_mtim, then.st_mtim)))
        return changedSinceCopied(item.name);
    return {};
}

/// Removes an item under the private name `aside`.
Result<void> removeAside(const FolderEntry& aside, const CopiedItem& item, bool& anythingRemoved) {
    TRY(checkSameContent(aside, item));
    const bool isFolder = S_ISDIR(item.original.st_mode);
    if (isFolder) {
        FileDescriptor opened = TRY(openSubfolder(aside));
        for (const CopiedItem& child : item.children)
            TRY(removeOriginal(opened.number(), child, anythingRemoved));
    }
    if (::unlinkat(aside.folder, aside.name.c_str(), isFolder ? AT_REMOVEDIR : 0) != 0)
        return systemFailure("cannot remove " + item.name);
    anythingRemoved = true;
    return {};
}

} // namespace

Result<CopiedItem> copyTree(const FolderEntry& from, const FolderEntry& to, Original original) {
    if (statusOf(to))
        return systemFailure("cannot copy to " + to.name, EEXIST);
    Result<CopiedItem> item = copyItem(from, to, original, 0);
    if (!item)
        removeTree(to);
    return item;
}

Result<void> checkUnchanged(int folder, const CopiedItem& item) {
    TRY(checkSameContent({folder, item.name}, item));
    if (!S_ISDIR(item.original.st_mode))
        return {};
    Result<FileDescriptor> opened = openSubfolder({folder, item.name});
    struct stat now {};
    if (!opened || ::fstat(opened->number(), &now) != 0 || !sameTime(now.st_mtim, item.original.st_mtim))
        return changedSinceCopied(item.name);
    for (const CopiedItem& child : item.children)
        TRY(checkUnchanged(opened->number(), child));
    return {};
}

/// The item is examined under a private name, since another process may put a new file under the original
/// name at any time.
Result<void> removeOriginal(int folder, const CopiedItem& item, bool& anythingRemoved) {
    const FolderEntry place{folder, item.name}, aside{folder, temporaryName()};
    TRY(checkSameContent(place, item));
    if (const int error = setAside(place, aside); error != 0)
        return systemFailure("cannot remove " + item.name, error);
    Result<void> removed = removeAside(aside, item, anythingRemoved);
    if (!removed && putBack(aside, place) != 0)
        anythingRemoved = true; // from its place
    return removed;
}

bool removeTree(const FolderEntry& entry) {
    if (::unlinkat(entry.folder, entry.name.c_str(), 0) == 0 || errno == ENOENT)
        return true;
    if (errno != EISDIR)
        return false;
    (void)(::fchmodat(entry.folder, entry.name.c_str(), 0700, 0) == 0);
    if (Result<FileDescriptor> folder = openSubfolder(entry))
        if (Result<std::vector<std::string>> names = namesIn(folder->number()))
            for (const std::string& name : *names)
                removeTree({folder->number(), name});
    return ::unlinkat(entry.folder, entry.name.c_str(), AT_REMOVEDIR) == 0;
}

Result<void> checkRemovable(int folder, const struct stat& item) {
    if (::faccessat(folder, ".", W_OK | X_OK, AT_EACCESS) != 0)
        return systemFailure("cannot remove items from the folder");
    struct stat status {};
    if (::fstat(folder, &status) != 0)
        return systemFailure("cannot examine the folder");
    const uid_t user = ::geteuid();
    const bool isForOwnersOnly = (status.st_mode & S_ISVTX) != 0 && user != 0;
    if (isForOwnersOnly && user != status.st_uid && user != item.st_uid)
        return Failure{Reason::notPermitted, "the item belongs to another user in a shared folder"};
    return {};
}

} // namespace kestrine
