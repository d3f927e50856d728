// Folders: making them, opening them and listing what is in them.
#pragma once

#include "platform/host/files/FileDescriptor.h"
#include "platform/host/files/FolderEntry.h"

#include <vector>

namespace kestrine {

/// Functions that walk through nested folders go no deeper than this. Each level keeps up to two descriptors
/// open, and a process usually has 1024.
inline constexpr unsigned maxFolderDepth = 200;

/// Makes one folder with the rights 0777 less the umask. Its parent must exist; a name in use is
/// alreadyExists, whatever uses it.
Result<void> makeFolder(const std::string& path);

/// Makes the folder and every missing one above it, for the user alone (0700). Nothing happens to those
/// that exist.
Result<void> makePrivateFolders(const std::string& path);

/// Holds a folder open for the calls that take a folder's descriptor. Without the right to read it can
/// still be used, but not be listed or synced.
Result<FileDescriptor> openFolder(const std::string& path);

/// The same for a folder in a folder; a symbolic link is refused.
Result<FileDescriptor> openSubfolder(const FolderEntry& entry);

/// The names in an open folder, in no order, without "." and "..".
Result<std::vector<std::string>> namesIn(int folder);

} // namespace kestrine
