// Non-lossy ASCII: any UTF-16 text in 7-bit bytes, with backslash escapes for the rest.
#pragma once

#include "platform/host/Bytes.h"

#include <optional>
#include <string>

namespace kestrine {

/// Nothing for a byte above 127 and for an escape that is none of "\\", "\ooo" (octal, up to 377) and
/// "\uhhhh" (hexadecimal).
std::optional<std::u16string> textFromNonLossyASCII(ByteView bytes);

} // namespace kestrine
