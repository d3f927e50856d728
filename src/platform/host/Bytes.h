// Byte sequences: Bytes owns its content, ByteView does not.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace kestrine {

using Bytes = std::vector<std::uint8_t>;
using ByteView = std::span<const std::uint8_t>;

inline Bytes copied(ByteView bytes) { return {bytes.begin(), bytes.end()}; }

} // namespace kestrine
