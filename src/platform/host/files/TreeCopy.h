// A complete, verified copy of a file, link or folder, and the removal of its original.
// Only what was copied is ever removed: what came or changed meanwhile stays.
#pragma once

#include "platform/host/files/FolderEntry.h"

#include <vector>

namespace kestrine {

/// What was copied, as it was when its copying began.
struct CopiedItem {
    std::string name;
    struct stat original;
    std::vector<CopiedItem> children; ///< of a folder
};

/// What becomes of the original after the copy.
enum class Original : bool { stays, goes };

/// Copies `from` to `to`, whose name must be free: bytes, links, extended attributes, rights, times. Fails,
/// without leaving anything at `to`, when any part cannot be copied: pipes, sockets and devices
/// (unsupported), more than 200 nested folders (tooLarge), other file systems (refused) and, when the
/// original is to go, what could not be removed afterwards for lack of rights (notPermitted) and attributes
/// that are not kept at `to` (unsupported); when it stays, its copy does without these.
Result<CopiedItem> copyTree(const FolderEntry& from, const FolderEntry& to,
                            Original original = Original::goes);

/// Fails (truncated) when anything in the original is no longer as it was copied.
Result<void> checkUnchanged(int folder, const CopiedItem& item);

/// Removes the original. `anythingRemoved` tells after a failure whether it is still whole.
Result<void> removeOriginal(int folder, const CopiedItem& item, bool& anythingRemoved);

/// Removes a tree of our own, write-protected folders included.
void removeTree(const FolderEntry& entry);

/// Whether the user may take `item` out of `folder`: needs the right to write there, and in a folder shared
/// with others (sticky) one of the two must be the user's own.
Result<void> checkRemovable(int folder, const struct stat& item);

} // namespace kestrine
