// ProfileBytes: the numbers in ICC profiles, which are all big-endian. The caller has checked that they are
// there.
#pragma once

#include "platform/host/Bytes.h"

#include <cstddef>

namespace kestrine {

inline std::uint16_t bigEndian16(ByteView bytes, std::size_t at) {
    return static_cast<std::uint16_t>(bytes[at] << 8 | bytes[at + 1]);
}

inline std::uint32_t bigEndian32(ByteView bytes, std::size_t at) {
    return std::uint32_t{bigEndian16(bytes, at)} << 16 | bigEndian16(bytes, at + 2);
}

} // namespace kestrine
