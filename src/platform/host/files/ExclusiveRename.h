// Giving something a new name without ever replacing what has that name already.
#pragma once

#include "platform/host/files/FolderEntry.h"

namespace kestrine {

/// What the file system may offer, best first. A mechanism that proves missing is switched off, so that
/// the next call does not try it again; tests switch them off to reach the later ones.
struct RenameMechanisms {
    bool exclusiveRename = true; ///< a rename that refuses to replace
    bool hardLink = true;        ///< a second name, then the first one goes; not for folders
    // Without either, the new name is reserved by an empty file or folder, which the rename then replaces.
};

/// Renames a file, link or folder. Answers 0, or the system's error number: EEXIST when the new name is
/// taken, EXDEV when it lies on another file system. After an error everything is as before.
int renameWithoutReplacing(const FolderEntry& from, const FolderEntry& to, RenameMechanisms& mechanisms);

} // namespace kestrine
