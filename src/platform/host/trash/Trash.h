// The user's trash, as defined by the freedesktop.org Trash specification 1.0.
// After a failure an item is complete either at its original place or in the trash.
#pragma once

#include "platform/host/Result.h"
#include "platform/host/process/Environment.h"
#include "platform/host/trash/TrashFolder.h"

#include <string>

namespace kestrine {

/// Moves a file, a folder or a link (not its target) to the trash. The trash is, in this order:
///   1. the home trash, if it is on the same file system as the item;
///   2. the trash on the item's own file system;
///   3. the home trash, by a verified copy and the removal of the original.
/// Fails with refused for the names "", ".", ".." and "/", for mount points, the home folder, the current
/// folder and the trash, for folders that contain one of these, and for items in a trash. After any other
/// failure (notFound, notPermitted, noSpace, tooLarge, unsupported, inputOutput, truncated) the item is still
/// in its place, with one exception: if the removal of a copied folder stops halfway, the complete copy is in
/// the trash and the rest of the folder stays.
Result<TrashedItem> moveToTrash(const std::string& path, const Environment& environment);

} // namespace kestrine
