// Removes a file only if it is what the caller knows.
#pragma once

#include "platform/host/files/ContentDigest.h"

namespace kestrine {

/// Removes the regular file at `path` if it has this content. Returns whether it did; false also if there is
/// none. A link is not followed. The file is examined once more under a temporary name, because another
/// process may put its own file at `path` at any time: that one stays there, or next to what is there then.
Result<bool> removeIfContentIs(const std::string& path, const ContentDigest& content);

} // namespace kestrine
