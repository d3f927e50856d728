// Numbers as PNG stores them.
#pragma once

#include <cstdint>

namespace kestrine {

inline std::uint32_t bigEndian32(const std::uint8_t* bytes) {
    return std::uint32_t{bytes[0]} << 24 | std::uint32_t{bytes[1]} << 16 | std::uint32_t{bytes[2]} << 8
           | bytes[3];
}

inline void storeBigEndian32(std::uint32_t number, std::uint8_t* bytes) {
    for (int i = 0; i < 4; ++i)
        bytes[i] = static_cast<std::uint8_t>(number >> (24 - 8 * i));
}

} // namespace kestrine
