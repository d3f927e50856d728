// ValueOrder: the byte order of the numbers in EXIF values.
#pragma once

#include "platform/host/Bytes.h"

namespace kestrine {

/// Exchanges the byte order of all numbers in the value of an entry, also of those in values of the type
/// UNDEFINED that are known to hold some. Values of unknown types stay.
void exchangeByteOrder(std::uint16_t tag, std::uint16_t type, Bytes& value);

} // namespace kestrine
