// Numbers stored with the highest byte first.
#pragma once

#include "platform/host/Bytes.h"

namespace kestrine {

/// Appends the lowest `size` bytes of `number`. `size` is at most 8.
inline void appendBigEndian(Bytes& bytes, std::uint64_t number, int size) {
    for (int shift = 8 * (size - 1); shift >= 0; shift -= 8)
        bytes.push_back(static_cast<std::uint8_t>(number >> shift));
}

/// The number that `bytes` hold. There are at most 8 of them.
inline std::uint64_t bigEndian(ByteView bytes) {
    std::uint64_t number = 0;
    for (const std::uint8_t byte : bytes)
        number = number << 8 | byte;
    return number;
}

} // namespace kestrine
