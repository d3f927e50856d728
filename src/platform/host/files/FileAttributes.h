// The attributes that a file system keeps for each item, and the creation of folders with given attributes.
#pragma once

#include "platform/host/Result.h"

#include <string>
#include <sys/stat.h>

namespace kestrine {

/// Whether a path that ends in a symbolic link refers to the target of the link or to the link itself.
enum class FollowLinks : bool { no, yes };

/// Fails with notFound if nothing exists at `path`, or if a followed link has no target.
Result<struct stat> attributesOf(const std::string& path, FollowLinks follow);

/// Creates one folder with the mode bits below 010000 and the modification time of `attributes`, and with its
/// owner and group if that is permitted. If it is not permitted, the set-user-ID, set-group-ID and sticky
/// bits are left out. It is not an error if attributes cannot be set. Fails with alreadyExists if the name is
/// in use.
Result<void> makeFolderWithAttributes(const std::string& path, const struct stat& attributes);

/// Whoever may read the file may also execute it. Follows symbolic links.
Result<void> makeExecutable(const std::string& path);

/// Makes `folder` the current folder of the whole process.
Result<void> changeCurrentFolder(const std::string& folder);

} // namespace kestrine
