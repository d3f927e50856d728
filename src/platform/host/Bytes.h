// The two ways in which bytes are passed: owned and looked at.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace kestrine {

using Bytes = std::vector<std::uint8_t>;
using ByteView = std::span<const std::uint8_t>;

} // namespace kestrine
