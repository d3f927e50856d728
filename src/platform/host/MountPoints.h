// Where one file system ends and another begins.
// Paths must be absolute and free of symbolic links and dots, as realpath(3) gives them.
#pragma once

#include "platform/host/FolderEntry.h"

#include <string>

namespace kestrine {

/// The folder on which the file system of `folder` is mounted; the same disk mounted in a second place
/// counts as another one, since files cannot be renamed across.
std::string topFolderOf(const std::string& folder);

/// Whether something is mounted on the entry itself, be it a folder or a file, or the system does not tell.
bool isMountPoint(const FolderEntry& entry);

/// Whether something is mounted anywhere below `folder`.
bool hasMountPointBelow(const std::string& folder);

} // namespace kestrine
