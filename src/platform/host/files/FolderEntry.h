// FolderEntry: a name in an open folder. Because the folder is open, an operation reaches the right entry
// even if another process renames the folder or puts a link in its place.
#pragma once

#include "platform/host/Result.h"

#include <string>
#include <sys/stat.h>

namespace kestrine {

struct FolderEntry {
    int folder;       ///< open descriptor; not owned
    std::string name; ///< without a slash
};

/// The status of the entry itself; a link is not followed.
Result<struct stat> statusOf(const FolderEntry& entry);

/// Whether both are the status of the same file, folder or link, whatever its name and content are.
bool isSameItem(const struct stat& one, const struct stat& other);

/// A random name for a temporary item: ".<16 hexadecimal digits>.kestrine-tmp".
std::string temporaryName();

} // namespace kestrine
