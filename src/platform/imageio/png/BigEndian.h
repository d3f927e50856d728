// Numbers as PNG stores them.
#pragma once

#include "platform/host/Bytes.h"

#include <algorithm>
#include <bit>

namespace kestrine {

inline std::uint32_t bigEndian32(const std::uint8_t* bytes) {
    return std::uint32_t{bytes[0]} << 24 | std::uint32_t{bytes[1]} << 16 | std::uint32_t{bytes[2]} << 8
           | bytes[3];
}

inline void appendBigEndian32(std::uint32_t number, Bytes& to) {
    for (int shift = 24; shift >= 0; shift -= 8)
        to.push_back(static_cast<std::uint8_t>(number >> shift));
}

/// Copies 16-bit samples from the machine's order into PNG's, or back.
inline void copyBigEndianWords(ByteView from, std::uint8_t* to) {
    if constexpr (std::endian::native == std::endian::big) {
        std::copy(from.begin(), from.end(), to);
    } else {
        for (std::size_t i = 0; i + 1 < from.size(); i += 2) {
            to[i] = from[i + 1];
            to[i + 1] = from[i];
        }
    }
}

} // namespace kestrine
