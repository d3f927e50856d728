// Paths as byte strings, for functions that do not raise when a path cannot be encoded.
#pragma once

#include "platform/foundation/text/NSString.h"

namespace kestrine {

/// nullopt for nil, and for a path with a zero character or with an unpaired surrogate that does not
/// represent a byte.
std::optional<std::string> pathBytesOf(const OptionalString& path);

} // namespace kestrine
