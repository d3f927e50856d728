// PNGRecipe: makes PNG files chunk by chunk, valid and invalid ones.
#pragma once

#include "platform/host/Bytes.h"

#include <cstddef>
#include <random>
#include <string_view>

namespace kestrine::testing {

/// A zlib stream. `windowBits` is the window that its header states; `level` is that of zlib.
Bytes zlibStream(ByteView bytes, int level = 6, int windowBits = 15);

struct PNGRecipe {
    std::uint32_t width = 5, height = 4;
    std::uint8_t bitDepth = 8, colorType = 2;
    Bytes rows;   ///< each after the number of its filter; see randomRows()
    Bytes stream; ///< the content of the IDAT chunks; see compress()
    std::size_t chunkBytes = 1 << 20;
    Bytes before, after; ///< whole chunks before and after the pixels

    std::size_t bytesPerPixel() const;
    std::size_t rowBytes() const { return bytesPerPixel() * width; }

    /// Random bytes with random filters, or with the given one. `spread` is the number of different values.
    PNGRecipe& randomRows(std::mt19937& random, int filter = -1, unsigned spread = 256);
    PNGRecipe& compress(int level = 6, int windowBits = 15);

    /// The file, with correct checksums of all chunks.
    Bytes make() const;
};

/// Appends a chunk whose checksum is correct, or wrong by `error`.
void addChunk(Bytes& file, std::string_view type, ByteView content, std::uint32_t error = 0);

/// Where the chunk after the header begins.
constexpr std::size_t afterHeader = 33;
/// The file with one more chunk directly after its header.
Bytes withChunk(Bytes file, std::string_view type, ByteView content);
/// The file with one more chunk after its pixels, as the last one before its end.
Bytes withLateChunk(Bytes file, std::string_view type, ByteView content);

} // namespace kestrine::testing
