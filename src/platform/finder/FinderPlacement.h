// Gives a complete item that has a hidden name its final name in the same folder.
// An existing item of that name is replaced in one step and removed afterwards.
#pragma once

#include "platform/finder/Finder.h"
#include "platform/host/files/FolderEntry.h"

namespace kestrine {

/// Succeeds when the name is free or its item can be replaced. alreadyExists without Replacing::yes;
/// notPermitted when the item or something in it cannot be removed; refused when a file system is mounted
/// there.
Result<void> checkPlace(const FolderEntry& place, Replacing replacing);

/// What happened to the item that had the name.
struct Placement {
    bool hasReplaced = false;
    std::string hidden; ///< the replaced item's present name; empty when it is already removed
};

/// Renames `staged`, a name in the same folder, to the place. A failure changes nothing.
Result<Placement> putInPlace(const std::string& staged, const FolderEntry& place, Replacing replacing);

/// Removes the replaced item. If that fails, the item gets a visible name ("a replaced.jpg").
Result<void> removeReplaced(const Placement& placement, const FolderEntry& place);

/// Renames `staged` to the first free name of "a copy.jpg", "a copy 2.jpg", ... and returns it.
Result<std::string> putBeside(const std::string& staged, const FolderEntry& original);

} // namespace kestrine
