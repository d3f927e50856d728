// Renaming without ever replacing an existing item, and hiding an item while it is examined.
#pragma once

#include "platform/host/files/FolderEntry.h"

namespace kestrine {

/// The mechanisms to try, in this order. renameWithoutReplacing() switches off each one that the file system
/// lacks, so that the next call does not try it again.
struct RenameMechanisms {
    bool exclusiveRename = true; ///< a rename that never replaces
    bool hardLink = true;        ///< a link under the new name, then removal of the old name; not for folders
    // Without either, an empty file or folder reserves the new name, and a plain rename replaces it.
};

/// Renames a file, link or folder. Returns 0 or the system's error number: EEXIST if the new name is in use,
/// EXDEV if it is on another file system. After an error nothing has changed.
int renameWithoutReplacing(const FolderEntry& from, const FolderEntry& to, RenameMechanisms& mechanisms);

/// Renames `place` to `aside`, a temporary name in the same folder. For examining an item before removing it:
/// nobody else knows the name, so what is examined is what is removed. Returns 0 or the error number.
int setAside(const FolderEntry& place, const FolderEntry& aside);

/// The reverse. Takes the next free name ("a.2.jpg" for "a.jpg") if another item is at `place` by now.
/// Returns 0 or the error number; after an error the item stays at `aside`.
int putBack(const FolderEntry& aside, const FolderEntry& place);

} // namespace kestrine
