// Numbers stored with the lowest byte first.
#pragma once

#include "platform/host/Bytes.h"

namespace kestrine {

/// The number that `bytes` hold. There are at most 8 of them.
inline std::uint64_t littleEndian(ByteView bytes) {
    std::uint64_t number = 0;
    for (std::size_t i = bytes.size(); i-- > 0;)
        number = number << 8 | bytes[i];
    return number;
}

} // namespace kestrine
