// Paths as byte strings, for functions that do not raise when a path cannot be encoded.
#pragma once

#include "platform/foundation/text/NSString.h"

namespace kestrine {

/// Nothing for nil, and for a path with a zero character or with an unpaired surrogate that stands for no
/// byte.
std::optional<std::string> pathBytesOf(const OptionalString& path);

} // namespace kestrine
