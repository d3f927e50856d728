// Removes a file only if it is what the caller knows.
#pragma once

#include "platform/host/files/ContentDigest.h"
#include "platform/host/files/FolderEntry.h"

namespace kestrine {

/// Removes the regular file at `path` if it has this content. Returns whether it did; false also if there is
/// none. A link is not followed. The file is examined once more under the temporary name `aside`, because
/// another process may put its own file at `path` at any time: that one stays there, or next to what is there
/// then. Only a process that is killed leaves the file under that name.
Result<bool> removeIfContentIs(const std::string& path, const ContentDigest& content,
                               const std::string& aside = temporaryName());

} // namespace kestrine
