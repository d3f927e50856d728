// PNGRecipe: PNG files put together chunk by chunk, with every choice that a writer of such files has, good
// and bad.
#pragma once

#include "platform/host/Bytes.h"

#include <cstddef>
#include <random>
#include <string_view>

namespace kestrine::testing {

/// A zlib stream. `windowBits` is what its header claims; `level` as zlib has it.
Bytes zlibStream(ByteView bytes, int level = 6, int windowBits = 15);

struct PNGRecipe {
    std::uint32_t width = 5, height = 4;
    std::uint8_t bitDepth = 8, colorType = 2;
    Bytes rows;   ///< each behind its filter's number; see randomRows()
    Bytes stream; ///< what the IDAT chunks hold; see compress()
    std::size_t chunkBytes = 1 << 20;
    Bytes before, behind; ///< whole chunks around the pixels

    std::size_t bytesPerPixel() const;
    std::size_t rowBytes() const { return bytesPerPixel() * width; }

    /// Any bytes behind any filter, or behind the one given. `spread` is how many values the bytes have.
    PNGRecipe& randomRows(std::mt19937& random, int filter = -1, unsigned spread = 256);
    PNGRecipe& compress(int level = 6, int windowBits = 15);

    /// The file, with correct checksums of all chunks.
    Bytes make() const;
};

/// Appends a chunk with a correct checksum, or one that is off by `error`.
void addChunk(Bytes& file, std::string_view type, ByteView content, std::uint32_t error = 0);

} // namespace kestrine::testing
