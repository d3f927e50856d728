// One piece of a zlib stream, compressed by itself so that several can be at work at once.
#pragma once

#include "platform/host/Bytes.h"

namespace kestrine::png {

/// What is compressed in how many bytes.
struct DeflatedPiece {
    Bytes deflated;
    std::uint32_t adler = 0; ///< of the bytes before compression, as of a stream of its own
    std::size_t length = 0;  ///< before compression
};

/// `bytes` as deflate blocks that fill whole bytes. Unless it `isLast`, more blocks may follow.
DeflatedPiece deflatePiece(ByteView bytes, bool isLast);

/// The checksum of a stream from those of its two parts, the second being `length` long.
std::uint32_t joinedAdler(std::uint32_t first, std::uint32_t second, std::size_t length);

} // namespace kestrine::png
