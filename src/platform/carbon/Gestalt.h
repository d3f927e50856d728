// Gestalt: what kind of system this is.
#pragma once

#include "platform/carbon/MacTypes.h"

namespace kestrine {

/// The selector of the system's version, a hexadecimal number: 0x1058 is 10.5.8.
inline constexpr OSType gestaltSystemVersion = fourCharacterCode("sysv");
inline constexpr OSErr gestaltUndefSelectorErr = -5551;

/// Fills `response`. Only the system's version is known. May be called from any thread.
OSErr Gestalt(OSType selector, std::int32_t* response);

/// For tests: the version that Gestalt gives from now on, in the whole process.
void setSystemVersion(std::int32_t version);

} // namespace kestrine
