// The version of the system that the platform presents to programs.
#pragma once

#include <cstdint>

namespace kestrine {

/// Sets the version that Gestalt() reports, for the whole process; initially 0x1058. Thread-safe.
void setSystemVersion(std::int32_t version);

} // namespace kestrine
