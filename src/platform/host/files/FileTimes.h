// When a file was modified.
#pragma once

#include "platform/host/Result.h"

#include <chrono>
#include <string>

namespace kestrine {

using FileTime = std::chrono::sys_time<std::chrono::nanoseconds>;

Result<FileTime> modificationTime(const std::string& path);

/// The time of the last access stays.
Result<void> setModificationTime(const std::string& path, FileTime time);

} // namespace kestrine
