// A complete, verified copy of one regular file or symbolic link.
#pragma once

#include "platform/host/files/ExtendedAttributes.h"
#include "platform/host/files/FolderEntry.h"

namespace kestrine {

/// Makes `to`, a new file, a copy of `from` with its bytes, extended attributes, rights and times, and with
/// its owner where that is possible (for attributes see AttributeLoss). The bytes were on the disk and read
/// back as equal before this succeeds. `status` is what the file was before; one that changes meanwhile fails
/// (truncated).
Result<void> copyRegularFile(const FolderEntry& from, const FolderEntry& to, const struct stat& status,
                             AttributeLoss loss = AttributeLoss::refused);

/// The same for a symbolic link, which is copied itself.
Result<void> copySymbolicLink(const FolderEntry& from, const FolderEntry& to, const struct stat& status);

/// Fails (inputOutput) when two open files do not hold the same bytes.
Result<void> compareContents(int first, int second);

/// Gives an open file or folder the extended attributes, owner, rights and times of another: to be called
/// when its content is complete.
Result<void> copyAttributes(int from, int to, const struct stat& status,
                            AttributeLoss loss = AttributeLoss::refused);

} // namespace kestrine
