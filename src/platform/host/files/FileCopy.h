// A complete, verified copy of one regular file or symbolic link.
#pragma once

#include "platform/host/files/ExtendedAttributes.h"
#include "platform/host/files/FolderEntry.h"

namespace kestrine {

/// Makes the empty file that is open for reading and writing as `copy` a copy of `from` with its bytes,
/// extended attributes (see AttributeLoss), mode and times, and with its owner if possible. On success the
/// bytes have been synced, read back and compared. `status` is the status of `from` before the copy; fails
/// with truncated if the file has changed since.
Result<void> fillCopy(const FolderEntry& from, int copy, const struct stat& status,
                      AttributeLoss loss = AttributeLoss::refused);

/// fillCopy() into the new file `to`.
Result<void> copyRegularFile(const FolderEntry& from, const FolderEntry& to, const struct stat& status,
                             AttributeLoss loss = AttributeLoss::refused);

/// Creates the symbolic link `to` as a copy of the link `from`, with its target and times, and with its owner
/// if possible. `status` is the status of `from`.
Result<void> copySymbolicLink(const FolderEntry& from, const FolderEntry& to, const struct stat& status);

/// Fails with inputOutput if two open files have different content.
Result<void> compareContents(int first, int second);

/// Copies the extended attributes of the open file or folder `from` to `to`, and sets the owner, mode and
/// times from `status`. To be called when the content of `to` is complete, because writing changes the times.
Result<void> copyAttributes(int from, int to, const struct stat& status,
                            AttributeLoss loss = AttributeLoss::refused);

} // namespace kestrine
