// Gestalt: properties of the system.
#pragma once

#include "platform/carbon/MacTypes.h"

namespace kestrine {

/// The selector of the system's version, one hexadecimal digit per part: 0x1058 is 10.5.8.
inline constexpr OSType gestaltSystemVersion = fourCharacterCode("sysv");
inline constexpr OSErr gestaltUndefSelectorErr = -5551;

/// Only the system's version is supported (else -5551). -50 when `response` is null. Thread-safe.
OSErr Gestalt(OSType selector, std::int32_t* response);

} // namespace kestrine
