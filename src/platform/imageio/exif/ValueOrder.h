// ValueOrder: the byte order of the numbers in EXIF values.
#pragma once

#include "platform/host/Bytes.h"

namespace kestrine {

/// Reverses the byte order of all numbers in the value of an entry, including those known to be in values of
/// the type UNDEFINED. Values of unknown types stay.
void exchangeByteOrder(std::uint16_t tag, std::uint16_t type, Bytes& value);

} // namespace kestrine
