// Non-lossy ASCII: an encoding of UTF-16 text in 7-bit bytes with backslash escapes.
#pragma once

#include "platform/host/Bytes.h"

#include <optional>
#include <string>

namespace kestrine {

/// Empty if a byte is above 127 or an escape is not one of "\\", "\ooo" (octal, up to 377) and "\uhhhh"
/// (hexadecimal).
std::optional<std::u16string> textFromNonLossyASCII(ByteView bytes);

} // namespace kestrine
