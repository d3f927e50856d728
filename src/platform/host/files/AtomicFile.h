// Files that appear complete or not at all.
// publishNewFile() never replaces a file; replaceFile() replaces one.
#pragma once

#include "platform/host/Bytes.h"
#include "platform/host/Result.h"
#include "platform/host/files/FileContent.h"

#include <functional>
#include <string>

namespace kestrine {

/// The path to try as attempt 0, 1, 2 and so on, all in the same folder. A generator that returns the same
/// path four times in a row has no further candidates.
using CandidatePaths = std::function<std::string(unsigned attempt)>;

/// Writes a new file (mode 0666 minus the umask) and gives it the first candidate name that is free. Returns
/// the chosen path. Failures: noSpace, notPermitted, notFound (no such folder), malformed (empty path or zero
/// byte), tooLarge (name or file too long), alreadyExists (no further candidate), inputOutput. After a
/// failure there is no new file, with one exception: if only the last step fails, syncing the folder, the
/// complete file stays.
Result<std::string> publishNewFile(const CandidatePaths& candidates, ByteView content, Durability durability);

/// Replaces the content of `path` in one step and syncs it. An existing file keeps its mode, and its owner
/// where that is possible. A symbolic link stays and its target is replaced. A new file has the mode 0600,
/// and folders that had to be created for it have 0700. Fails with notPermitted for a write-protected file
/// and with notRegularFile for anything that is not a regular file.
Result<void> replaceFile(const std::string& path, ByteView content);

} // namespace kestrine
