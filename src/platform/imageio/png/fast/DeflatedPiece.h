// One piece of a zlib stream, compressed separately so that several threads can compress pieces at once.
#pragma once

#include "platform/host/Bytes.h"

namespace kestrine::png {

struct DeflatedPiece {
    Bytes deflated;
    std::uint32_t adler = 0; ///< checksum of the bytes before compression, as for a separate stream
    std::size_t length = 0;  ///< in bytes, before compression
};

/// `bytes` as deflate blocks that end at a whole byte. More blocks can follow unless it `isLast`.
/// `compression` is libdeflate's level, 1 to 12.
DeflatedPiece deflatePiece(ByteView bytes, bool isLast, int compression);

/// The checksum of two joined parts from the checksums of each; the second part has `length` bytes.
std::uint32_t joinedAdler(std::uint32_t first, std::uint32_t second, std::size_t length);

} // namespace kestrine::png
