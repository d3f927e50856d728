// ProfileBytes: reads the numbers in ICC profiles, which are big-endian. The caller must check that they
// exist.
#pragma once

#include "platform/host/BigEndian.h"

#include <cstddef>

namespace kestrine {

inline std::uint16_t bigEndian16(ByteView bytes, std::size_t at) {
    return static_cast<std::uint16_t>(bigEndian(bytes.subspan(at, 2)));
}

inline std::uint32_t bigEndian32(ByteView bytes, std::size_t at) {
    return static_cast<std::uint32_t>(bigEndian(bytes.subspan(at, 4)));
}

} // namespace kestrine
