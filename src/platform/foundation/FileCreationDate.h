// The creation date of a file (`NSFileCreationDate`). It is kept in an extended attribute, because no system
// call sets the creation date of the file system itself. The creation time that file servers keep for clients
// is updated too.
#pragma once

#include "platform/host/Result.h"

#include <chrono>
#include <optional>

namespace kestrine {

/// The attribute with the date in the form of isoText().
inline constexpr const char* creationDateAttribute = "user.kestrine.creation-date";

/// The attribute in which a file server keeps DOS attributes and the creation time. It is updated but never
/// created.
inline constexpr const char* dosAttribute = "user.DOSATTRIB";

/// Does not change the other dates of the file. Fails with unsupported if the file system does not support
/// extended attributes, with notFound if there is no such file, and with notPermitted if the system denies
/// access.
Result<void> setFileCreationDate(const std::string& path, std::chrono::sys_seconds date);

/// The date in the form of isoText(), as it was set. Empty if the file has none.
std::optional<std::string> fileCreationDateText(const std::string& path);

} // namespace kestrine
