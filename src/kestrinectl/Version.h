// The version of this system, as the build files give it.
#pragma once

namespace kestrine {

/// Such as "1.2.0".
const char* programVersion();

} // namespace kestrine
