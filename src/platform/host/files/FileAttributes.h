// What the file system itself knows of an item, and folders that are made with it.
#pragma once

#include "platform/host/Result.h"

#include <string>
#include <sys/stat.h>

namespace kestrine {

/// Whether a path whose last component is a symbolic link means the link or what it leads to.
enum class FollowLinks : bool { no, yes };

/// notFound when nothing is there, or when a link leads nowhere.
Result<struct stat> attributesOf(const std::string& path, FollowLinks follow);

/// Makes one folder with the rights (the bits below 010000) and the modification time of `attributes`, and
/// with its owner and group where that is permitted. Without the owner, the rights that depend on him are
/// left out. A name in use is alreadyExists. A folder that was made stays, also when its attributes could
/// not be set, which is no failure.
Result<void> makeFolderWithAttributes(const std::string& path, const struct stat& attributes);

/// Makes `folder` the current one of the whole process.
Result<void> changeCurrentFolder(const std::string& folder);

} // namespace kestrine
