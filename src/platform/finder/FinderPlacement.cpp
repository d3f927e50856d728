#include "platform/finder/FinderPlacement.h"

#include "platform/host/files/ExclusiveRename.h"
#include "platform/host/files/FileDescriptor.h"
#include "platform/host/files/Folders.h"
#include "platform/host/files/MountPoints.h"
#include "platform/host/files/PathParts.h"
#include "platform/host/files/TreeCopy.h"

#include <cerrno>
#include <cstdio>
#include <unistd.h>

namespace kestrine {

namespace {

/// Succeeds when the user may remove the entry and everything in it. Changes nothing.
Result<void> checkTreeRemovable(const FolderEntry& entry) {
    struct stat status = TRY(statusOf(entry));
    if (isMountPoint(entry))
        return Failure{Reason::refused, "a file system is mounted on " + entry.name};
    TRY(checkRemovable(entry.folder, status));
    if (!S_ISDIR(status.st_mode))
        return {};
    FileDescriptor folder = TRY(openSubfolder(entry));
    std::vector<std::string> names = TRY(namesIn(folder.number()));
    for (const std::string& name : names)
        TRY(checkTreeRemovable({folder.number(), name}));
    return {};
}

int renameTo(const FolderEntry& from, const std::string& name) {
    return ::renameat(from.folder, from.name.c_str(), from.folder, name.c_str()) == 0 ? 0 : errno;
}

bool exchangeIsMissing(int error) { return error == EINVAL || error == ENOSYS || error == EOPNOTSUPP; }

/// For file systems that cannot exchange names: renames the old item first, and renames it back if the new
/// one cannot get the name.
Result<std::string> swapStepwise(const FolderEntry& staged, const FolderEntry& place) {
    const FolderEntry aside{place.folder, temporaryName()};
    int error = renameTo(place, aside.name);
    if (error == 0) {
        error = renameTo(staged, place.name);
        if (error == 0)
            return aside.name;
        (void)renameTo(aside, place.name);
    }
    return systemFailure("cannot replace " + place.name, error);
}

/// Returns the old item's new name.
Result<std::string> swap(const FolderEntry& staged, const FolderEntry& place) {
    if (::renameat2(staged.folder, staged.name.c_str(), place.folder, place.name.c_str(), RENAME_EXCHANGE)
        == 0)
        return staged.name;
    if (!exchangeIsMissing(errno))
        return systemFailure("cannot replace " + place.name);
    return swapStepwise(staged, place);
}

Result<void> takeFreeName(const FolderEntry& staged, const FolderEntry& place) {
    RenameMechanisms mechanisms;
    const int error = renameWithoutReplacing(staged, place, mechanisms);
    if (error != 0)
        return systemFailure("cannot give an item the name " + place.name, error);
    return {};
}

/// Tries "a WORD.jpg", "a WORD 2.jpg", ... until one is free.
Result<std::string> takeNameWith(const std::string& word, const FolderEntry& staged,
                                 const std::string& name) {
    const std::size_t longest = maxNameLengthIn(staged.folder);
    for (unsigned attempt = 1;; ++attempt) {
        const std::string number = attempt > 1 ? " " + std::to_string(attempt) : "";
        std::string candidate = nameWithAddition(name, " " + word + number, longest);
        Result<void> taken = takeFreeName(staged, {staged.folder, candidate});
        if (taken)
            return candidate;
        if (taken.failure().reason != Reason::alreadyExists)
            return taken.failure();
    }
}

} // namespace

Result<void> checkPlace(const FolderEntry& place, Replacing replacing) {
    Result<struct stat> status = statusOf(place);
    if (!status && status.failure().reason == Reason::notFound)
        return {};
    if (!status)
        return status.failure();
    if (replacing == Replacing::no)
        return Failure{Reason::alreadyExists, place.name + " already exists"};
    return checkTreeRemovable(place);
}

Result<Placement> putInPlace(const std::string& staged, const FolderEntry& place, Replacing replacing) {
    const FolderEntry arriving{place.folder, staged};
    Result<struct stat> old = statusOf(place), now = statusOf(arriving);
    if (!now)
        return now.failure();
    if (replacing == Replacing::no || !old) {
        TRY(takeFreeName(arriving, place));
        return Placement{};
    }
    if (S_ISDIR(old->st_mode) || S_ISDIR(now->st_mode)) {
        std::string hidden = TRY(swap(arriving, place));
        return Placement{true, hidden};
    }
    if (const int error = renameTo(arriving, place.name); error != 0)
        return systemFailure("cannot replace " + place.name, error);
    return Placement{true, ""};
}

Result<void> removeReplaced(const Placement& placement, const FolderEntry& place) {
    if (placement.hidden.empty())
        return {};
    const FolderEntry old{place.folder, placement.hidden};
    removeTree(old);
    if (!statusOf(old))
        return {};
    std::string name = TRY(takeNameWith("replaced", old, place.name));
    return Failure{Reason::inputOutput,
                   "the item that " + place.name + " replaced cannot be removed; its name is now " + name};
}

Result<std::string> putBeside(const std::string& staged, const FolderEntry& original) {
    return takeNameWith("copy", {original.folder, staged}, original.name);
}

} // namespace kestrine
