// The bytes of a path for those platform functions that answer nothing, rather than raise, for a text that
// no file can have as its name.
#pragma once

#include "platform/foundation/text/NSString.h"

namespace kestrine {

/// Absent for nil, for half a character and for a zero character.
std::optional<std::string> pathBytesOf(const OptionalString& path);

} // namespace kestrine
