// Renaming without ever replacing an existing item.
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

} // namespace kestrine
