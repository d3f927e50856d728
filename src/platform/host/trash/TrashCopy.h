// Copies of items of other file systems, taken into a trash.
#pragma once

#include "platform/host/files/TreeCopy.h"
#include "platform/host/trash/TrashFolder.h"

namespace kestrine {

/// A complete copy that is in the trash, and what it is a copy of.
struct AdmittedCopy {
    TrashedItem item;
    CopiedItem original;
};

/// Copies `entry`, which has the absolute path `path`, into the trash. The original stays. On success the
/// copy is verified and on the disk, together with its record. After a failure nothing is in the trash. A
/// crash leaves nothing of a file where the system has nameless files; otherwise it may leave an incomplete
/// copy under a hidden name, with a record, so that emptying the trash removes it.
Result<AdmittedCopy> copyIn(const TrashFolder& trash, const FolderEntry& entry, const std::string& path);

} // namespace kestrine
