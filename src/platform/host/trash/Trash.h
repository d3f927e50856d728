// The user's trash, after the freedesktop.org Trash specification 1.0.
// Whatever goes wrong, an item is either still at its place, whole, or in the trash, whole.
#pragma once

#include "platform/host/process/Environment.h"
#include "platform/host/Result.h"
#include "platform/host/trash/TrashFolder.h"

#include <string>

namespace kestrine {

/// Moves a file, folder or link (itself) to the trash: the one in the user's home when that lies on the
/// same file system, else the one on the item's own file system, else as a verified copy into the home's.
/// Refused are the names "", ".", "..", "/", mount points and folders that hold some, the home folder, the
/// process's current folder, what holds one of these, what lies in a trash and what holds one. Other failures
/// (notFound, notPermitted, noSpace, unsupported, inputOutput) say why the item is still where it was; only
/// when removing an original folder stops half way does the rest of it stay beside the whole copy in the
/// trash.
Result<TrashedItem> moveToTrash(const std::string& path, const Environment& environment);

} // namespace kestrine
