// Numbers stored with the lowest byte first.
#pragma once

#include "platform/host/Bytes.h"

namespace kestrine {

/// Appends the lowest `size` bytes of `number`. `size` is at most 8.
inline void appendLittleEndian(Bytes& bytes, std::uint64_t number, int size) {
    for (int i = 0; i < size; ++i)
        bytes.push_back(static_cast<std::uint8_t>(number >> 8 * i));
}

/// The number that `bytes` hold. There are at most 8 of them.
inline std::uint64_t littleEndian(ByteView bytes) {
    std::uint64_t number = 0;
    for (std::size_t i = bytes.size(); i-- > 0;)
        number = number << 8 | bytes[i];
    return number;
}

} // namespace kestrine
