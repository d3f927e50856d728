#include "platform/finder/FinderTransfer.h"

#include "platform/finder/FinderPlacement.h"
#include "platform/host/files/ExclusiveRename.h"
#include "platform/host/files/FileContent.h"
#include "platform/host/files/MountPoints.h"
#include "platform/host/files/PathParts.h"
#include "platform/host/files/TreeCopy.h"

#include <cerrno>
#include <unistd.h>

namespace kestrine {

namespace {

/// Compares device and inode as well as the path, because a folder can be mounted at a second path.
bool liesInItem(const FinderFolder& folder, const FinderItem& item) {
    return item.isFolder() && (folder.liesInOrIs(item.path()) || isSameItem(folder.status, item.status));
}

/// The checks that are possible before anything is changed.
Result<void> checkTransfer(const FinderFolder& folder, const FinderItem& item, Replacing replacing) {
    if (isMountPoint(item.entry()) || (item.isFolder() && hasMountPointBelow(item.path())))
        return Failure{Reason::refused, "a file system is mounted on or in " + item.name};
    if (liesInItem(folder, item))
        return Failure{Reason::refused, item.name + " cannot be put into itself"};
    if (replacing == Replacing::yes && item.folder.liesInOrIs(joinedPath(folder.path, item.name)))
        return Failure{Reason::refused, item.name + " is in the folder that it would replace"};
    return checkPlace(folder.entry(item.name), replacing);
}

/// Gives a finished copy the item's name; removes the copy when that fails.
Result<Placement> placeCopy(const FolderEntry& staged, const FolderEntry& place, Replacing replacing) {
    Result<Placement> placed = putInPlace(staged.name, place, replacing);
    if (!placed)
        removeTree(staged);
    return placed;
}

Result<void> duplicateInPlace(const FinderItem& item) {
    const FolderEntry staged = item.folder.entry(temporaryName());
    TRY(copyTree(item.entry(), staged, Original::stays));
    Result<std::string> name = putBeside(staged.name, item.entry());
    if (!name) {
        removeTree(staged);
        return name.failure();
    }
    return syncFolder(item.folder.descriptor.number());
}

/// Removes the original after its copy has its name. If nothing of the original could be removed and the copy
/// replaced nothing, the copy is removed instead.
Result<void> removeCopied(const FinderItem& item, const CopiedItem& copied, const FolderEntry& copy,
                          bool hasReplaced) {
    bool anythingRemoved = false;
    Result<void> removed = syncFolder(copy.folder);
    if (removed)
        removed = removeOriginal(item.folder.descriptor.number(), copied, anythingRemoved);
    if (!removed && !anythingRemoved && !hasReplaced)
        removeTree(copy);
    return removed;
}

Result<void> moveByCopy(const FinderFolder& folder, const FinderItem& item, Replacing replacing) {
    const FolderEntry staged = folder.entry(temporaryName()), place = folder.entry(item.name);
    CopiedItem copied = TRY(copyTree(item.entry(), staged, Original::goes));
    if (Result<void> same = checkUnchanged(item.folder.descriptor.number(), copied); !same) {
        removeTree(staged);
        return same;
    }
    Placement placed = TRY(placeCopy(staged, place, replacing));
    Result<void> moved = removeCopied(item, copied, place, placed.hasReplaced);
    Result<void> cleared = removeReplaced(placed, place);
    return moved ? cleared : moved;
}

Failure cannotMove(const FinderItem& item, int error) {
    return systemFailure("cannot move " + item.name, error);
}

/// Within one file system. The item first gets a hidden name in the folder, so that it can be moved back.
Result<void> moveReplacing(const FinderFolder& folder, const FinderItem& item) {
    const FolderEntry staged = folder.entry(temporaryName()), place = folder.entry(item.name);
    RenameMechanisms mechanisms;
    const int error = renameWithoutReplacing(item.entry(), staged, mechanisms);
    if (error == EXDEV)
        return moveByCopy(folder, item, Replacing::yes);
    if (error != 0)
        return cannotMove(item, error);
    Result<Placement> placed = putInPlace(staged.name, place, Replacing::yes);
    if (!placed) {
        (void)renameWithoutReplacing(staged, item.entry(), mechanisms);
        return placed.failure();
    }
    return removeReplaced(*placed, place);
}

/// Both names are hard links to one file, and renaming one to the other would do nothing.
Result<void> dropSecondName(const FinderItem& item) {
    if (::unlinkat(item.folder.descriptor.number(), item.name.c_str(), 0) != 0)
        return cannotMove(item, errno);
    return {};
}

} // namespace

Result<void> copyInto(const FinderFolder& folder, const FinderItem& item, Replacing replacing) {
    if (item.folder.isSame(folder))
        return replacing == Replacing::no ? duplicateInPlace(item) : Result<void>();
    TRY(checkTransfer(folder, item, replacing));
    const FolderEntry staged = folder.entry(temporaryName()), place = folder.entry(item.name);
    TRY(copyTree(item.entry(), staged, Original::stays));
    Placement placed = TRY(placeCopy(staged, place, replacing));
    Result<void> synced = syncFolder(place.folder);
    Result<void> cleared = removeReplaced(placed, place);
    return synced ? cleared : synced;
}

Result<void> moveInto(const FinderFolder& folder, const FinderItem& item, Replacing replacing) {
    if (item.folder.isSame(folder))
        return {};
    TRY(checkTransfer(folder, item, replacing));
    const FolderEntry place = folder.entry(item.name);
    Result<struct stat> old = statusOf(place);
    if (old && isSameItem(*old, item.status) && old->st_nlink > 1 && !item.isFolder())
        return dropSecondName(item);
    if (old)
        return moveReplacing(folder, item);
    RenameMechanisms mechanisms;
    const int error = renameWithoutReplacing(item.entry(), place, mechanisms);
    if (error == EXDEV)
        return moveByCopy(folder, item, replacing);
    if (error != 0)
        return cannotMove(item, error);
    return {};
}

} // namespace kestrine
