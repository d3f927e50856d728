// The list of all items below a folder.
#pragma once

#include "platform/host/Result.h"

#include <string>
#include <vector>

namespace kestrine {

/// The paths of all items below `folder`, relative to it. A folder comes before its content. Links are listed
/// and not followed. Mounted file systems are included. A subfolder that cannot be read (access denied, or
/// path too long) is listed without its content. Fails if `folder` is not a folder or cannot be read.
Result<std::vector<std::string>> pathsBelow(const std::string& folder);

} // namespace kestrine
