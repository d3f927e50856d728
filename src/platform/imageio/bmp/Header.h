// Header: what stands before the pixels of a BMP, whichever of its many headers it has.
#pragma once

#include "platform/coregraphics/ColorProfile.h"
#include "platform/host/files/ByteReader.h"

#include <optional>

namespace kestrine::bmp {

struct Header {
    std::uint32_t width = 0, height = 0;
    bool isTopDown = false; ///< else the lowest row is stored first
    bool isRunLength = false;
    unsigned bitsPerPixel = 0;     ///< 1, 4, 8: indices; 16, 24, 32: colours
    std::uint64_t pixelOffset = 0; ///< where in the file the pixels begin
    Bytes palette{};               ///< of indices: red, green, blue a colour; may be shorter than they reach
    std::array<std::uint32_t, 4> masks{}; ///< red, green, blue and alpha in 16 and 32 bits; no alpha: 0
    std::optional<ColorProfile> profile{};

    bool isIndexed() const { return bitsPerPixel <= 8; }
    /// Bytes from one row to the next where they are not run-length coded: whole groups of 32 bits.
    std::uint64_t stride() const { return (std::uint64_t{width} * bitsPerPixel + 31) / 32 * 4; }
    /// Bytes of a row without what fills up the last group.
    std::size_t bytesPerStoredRow() const { return (std::size_t{width} * bitsPerPixel + 7) / 8; }
};

/// Whether a file that begins with `head` is a BMP: its mark, and a header length that exists.
bool isBMP(ByteView head);

Result<Header> readHeader(const ByteReader& reader);

} // namespace kestrine::bmp
