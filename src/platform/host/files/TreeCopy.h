// A complete and verified copy of a file, link or folder, and the removal of the original.
// Only copied items are removed. Items that were added or changed since the copy stay.
#pragma once

#include "platform/host/files/FolderEntry.h"

#include <vector>

namespace kestrine {

/// A copied item, with its status from before the copy.
struct CopiedItem {
    std::string name;
    struct stat original;
    std::vector<CopiedItem> children; ///< the content of a folder
};

/// Whether the original is removed after the copy.
enum class Original : bool { stays, goes };

/// Copies `from` to `to` with its content, links, extended attributes, mode and times. The name `to` must be
/// free. If any part cannot be copied, the whole copy fails and nothing remains at `to`. Failures:
/// unsupported for pipes, sockets and devices, tooLarge for folders nested deeper than maxFolderDepth,
/// refused for mounted file systems. With Original::goes also notPermitted for items that the user may not
/// remove, and unsupported for attributes that the file system of `to` does not support. With Original::stays
/// the copy loses such attributes.
Result<CopiedItem> copyTree(const FolderEntry& from, const FolderEntry& to,
                            Original original = Original::goes);

/// Fails with truncated if any part of the original has changed since the copy.
Result<void> checkUnchanged(int folder, const CopiedItem& item);

/// Removes the original. After a failure `anythingRemoved` states whether part of it is no longer there. Each
/// item gets a hidden name before it is examined and removed, so that a file which another process puts under
/// the original name meanwhile stays. A crash may leave the hidden name.
Result<void> removeOriginal(int folder, const CopiedItem& item, bool& anythingRemoved);

/// Removes a tree that this program created, including folders without write permission. Returns whether
/// nothing of it is left.
bool removeTree(const FolderEntry& entry);

/// Fails with notPermitted unless the user may remove `item` from `folder`. This needs write permission in
/// the folder and, if the folder has the sticky bit, ownership of the folder or of the item.
Result<void> checkRemovable(int folder, const struct stat& item);

} // namespace kestrine
