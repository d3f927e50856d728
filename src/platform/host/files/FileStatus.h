// Whether something exists at a path.
#pragma once

#include "platform/host/Result.h"

#include <string>

namespace kestrine {

/// Whether an item exists. Follows symbolic links, so a dangling link does not count.
bool itemExists(const std::string& path);

/// Whether a folder exists. Follows symbolic links.
bool folderExists(const std::string& path);

/// Whether a special file exists: a pipe, socket or device, which may not deliver its content twice. Follows
/// symbolic links.
bool specialFileExists(const std::string& path);

/// The first item that exists: the path itself, or a folder above it.
std::string existingPartOf(std::string path);

/// Whether it is certain that no item exists. False if the system does not report it, for example because it
/// denies access.
bool isAbsent(const std::string& path);

/// Whether the name is in use, also by a dangling link. A name that cannot be looked up (access denied, name
/// too long) counts as free, so that a search for a free name ends.
bool isTaken(const std::string& path);

/// Fails if no item can have this name there, because a file system's limit is exceeded.
Result<void> checkNameIsPossible(const std::string& path);

} // namespace kestrine
