// The file "directorysizes" of a trash: a cache of the disk space of each folder in the trash.
#pragma once

#include "platform/host/files/FolderEntry.h"

#include <cstdint>
#include <ctime>

namespace kestrine {

/// The disk space of the entry and everything below it, in bytes. A file with several names counts once.
/// Folders nested deeper than maxFolderDepth are left out.
std::uint64_t diskSpaceOf(const FolderEntry& entry);

/// Adds a line for `folder`, an entry in "files", to the file in the open folder `trash`. `recordTime` is the
/// modification time of the item's record, which readers use to detect outdated lines. Errors are ignored.
void recordTrashedFolderSize(int trash, const FolderEntry& folder, std::time_t recordTime);

} // namespace kestrine
