// Everything below a folder, as paths.
#pragma once

#include "platform/host/Result.h"

#include <string>
#include <vector>

namespace kestrine {

/// The paths, relative to `folder`, of everything below it; a folder stands before what is in it. Links are
/// listed and not followed, other file systems are walked into. A folder below that cannot be listed, for
/// lack of rights or because its path is too long for the system, is listed itself. Fails when `folder` is
/// no folder or cannot be listed.
Result<std::vector<std::string>> pathsBelow(const std::string& folder);

} // namespace kestrine
