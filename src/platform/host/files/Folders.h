// Creating, opening and listing folders.
#pragma once

#include "platform/host/files/FileDescriptor.h"
#include "platform/host/files/FolderEntry.h"

#include <vector>

namespace kestrine {

/// Functions that walk through nested folders go no deeper than this. Each level keeps up to two descriptors
/// open, and a process usually has 1024.
inline constexpr unsigned maxFolderDepth = 200;

/// Creates one folder with the mode 0777 minus the umask. Fails with notFound if the parent does not exist,
/// and with alreadyExists if any item has the name.
Result<void> makeFolder(const std::string& path);

/// Creates the folder and all missing folders above it with the mode 0700, and syncs them. Existing folders
/// stay as they are.
Result<void> makePrivateFolders(const std::string& path);

/// Whether this process may make and remove names in the folder.
bool mayChangeFolder(const std::string& path);

/// Opens a folder for use in a FolderEntry. A folder without read permission can be opened too, but namesIn()
/// and syncing do not work on it.
Result<FileDescriptor> openFolder(const std::string& path);

/// Does the same as openFolder(), for an entry of an open folder. Fails if the entry is a symbolic link.
Result<FileDescriptor> openSubfolder(const FolderEntry& entry);

/// The names in an open folder, in no particular order, without "." and "..".
Result<std::vector<std::string>> namesIn(int folder);

/// The largest number of bytes in a name in an open folder.
std::size_t maxNameLengthIn(int folder);

} // namespace kestrine
