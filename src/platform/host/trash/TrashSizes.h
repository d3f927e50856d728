// The file "directorysizes" of a trash: how much room each folder in it takes, so that programs that show
// the trash need not walk through them. Losing a line does no harm.
#pragma once

#include "platform/host/files/FolderEntry.h"

#include <cstdint>
#include <ctime>

namespace kestrine {

/// Bytes on the disk of the entry and everything below it; a file with several names counts once.
std::uint64_t roomTaken(const FolderEntry& entry);

/// Adds the line of `folder`, an entry in the trash's "files", to the file in the open folder `trash`.
/// `recordTime` is the modification time of the item's record, by which readers tell stale lines.
void recordTrashedFolderSize(int trash, const FolderEntry& folder, std::time_t recordTime);

} // namespace kestrine
