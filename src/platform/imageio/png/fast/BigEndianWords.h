// 16-bit samples in big-endian order, as PNG stores them.
#pragma once

#include "platform/host/Bytes.h"

#include <algorithm>
#include <bit>

namespace kestrine::png {

/// Copies 16-bit samples from the machine's byte order to big-endian order, or back.
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

} // namespace kestrine::png
