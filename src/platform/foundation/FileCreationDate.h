// A file's creation date (`NSFileCreationDate`). No system call sets the one that the file system itself
// keeps, so ours is an extended attribute; the one that file servers keep for their clients follows it.
#pragma once

#include "platform/host/Result.h"

#include <chrono>
#include <optional>

namespace kestrine {

/// The attribute's content is the date as isoText() gives it.
inline constexpr const char* creationDateAttribute = "user.kestrine.creation-date";

/// Where a file server keeps DOS attributes and the creation time. It is brought up to date but never made.
inline constexpr const char* dosAttribute = "user.DOSATTRIB";

/// The file's other dates stay. Fails with unsupported where the file system keeps no extended attributes,
/// with notFound or notPermitted as the system says.
Result<void> setFileCreationDate(const std::string& path, std::chrono::sys_seconds date);

/// The date's text as it was set; nothing when there is none.
std::optional<std::string> fileCreationDateText(const std::string& path);

} // namespace kestrine
