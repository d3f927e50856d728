// Removes a file only if it has the expected content.
#pragma once

#include "platform/host/files/ContentDigest.h"
#include "platform/host/files/FolderEntry.h"

namespace kestrine {

/// Removes the regular file at `path` if it has this content. Returns whether it was removed; false also if
/// there is none. A link is not followed. The file is renamed to the temporary name `aside` and examined
/// again, because another process may put its own file at `path` at any time. Such a file is put back, under
/// the next free name if `path` is taken. The name `aside` remains only if the process is killed.
Result<bool> removeIfContentIs(const std::string& path, const ContentDigest& content,
                               const std::string& aside = temporaryName());

} // namespace kestrine
