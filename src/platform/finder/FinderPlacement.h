// Giving a complete item, which waits in a folder under a hidden name, the name it is to have.
// Something of that name gives way only in one step with the arrival of the new, and goes only afterwards.
#pragma once

#include "platform/finder/Finder.h"
#include "platform/host/files/FolderEntry.h"

namespace kestrine {

/// Whether the name is free, or what has it may and can give way: it and all it holds can be removed, and
/// no file system is mounted there (alreadyExists, notPermitted, refused).
Result<void> checkPlace(const FolderEntry& place, Replacing replacing);

/// What became of the one that had the name.
struct Placement {
    bool hasReplaced = false;
    std::string hidden; ///< the name under which a replaced folder, or file under a folder, waits to go
};

/// Renames `staged`, a name in the same folder, to the place. After a failure all is as it was.
Result<Placement> putInPlace(const std::string& staged, const FolderEntry& place, Replacing replacing);

/// Removes what was replaced. What cannot be removed gets a name that people see ("a replaced.jpg").
Result<void> removeReplaced(const Placement& placement, const FolderEntry& place);

/// Renames `staged` to the first free one of "a copy.jpg", "a copy 2.jpg", ... and answers that name.
Result<std::string> putBeside(const std::string& staged, const FolderEntry& original);

} // namespace kestrine
