// FolderEntry: one name in a folder that is held open, so that renaming the folder meanwhile, or putting a
// link in its place, cannot lead an operation elsewhere.
#pragma once

#include "platform/host/Result.h"

#include <string>
#include <sys/stat.h>

namespace kestrine {

struct FolderEntry {
    int folder;       ///< open descriptor; not owned
    std::string name; ///< without a slash
};

/// What the entry itself is; links are not followed.
Result<struct stat> statusOf(const FolderEntry& entry);

/// A name that nobody else uses: ".<16 hexadecimal digits>.kestrine-tmp".
std::string temporaryName();

} // namespace kestrine
