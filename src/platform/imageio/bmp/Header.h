// Header: the fields before the pixels of a BMP file, for all versions of its header.
#pragma once

#include "platform/coregraphics/ColorProfile.h"
#include "platform/host/files/ByteReader.h"

#include <optional>

namespace kestrine::bmp {

struct Header {
    std::uint32_t width = 0, height = 0;
    bool isTopDown = false; ///< otherwise the lowest row is stored first
    bool isRunLength = false;
    unsigned bitsPerPixel = 0;     ///< 1, 2, 4, 8: indices; 16, 24, 32: colours
    std::uint64_t pixelOffset = 0; ///< offset of the pixels in the file
    Bytes palette{}; ///< red, green, blue per colour; may have fewer colours than indices can address
    std::array<std::uint32_t, 4> masks{}; ///< red, green, blue, alpha, for 16 and 32 bits; 0 without alpha
    std::optional<ColorProfile> profile{};

    RowFormat format() const { return {width, height, ColorModel::rgb, masks[3] != 0, SampleDepth::bits8}; }
    bool isIndexed() const { return bitsPerPixel <= 8; }
    /// The position of row y from the top in stored order.
    std::size_t storedRow(std::uint32_t y) const { return isTopDown ? y : height - 1 - y; }
    /// Bytes from one uncompressed row to the next: a multiple of 4.
    std::uint64_t stride() const { return (std::uint64_t{width} * bitsPerPixel + 31) / 32 * 4; }
    /// Bytes of an uncompressed row without padding.
    std::size_t bytesPerStoredRow() const { return (std::size_t{width} * bitsPerPixel + 7) / 8; }
};

/// Whether a file that begins with `head` is a BMP: it has the signature and a known header length.
bool isBMP(ByteView head);

/// Whether it is a list of several bitmaps (OS/2). The first one begins after arrayHeaderLength bytes; its
/// offset of pixels counts from the start of the file.
bool isBMPArray(ByteView head);
inline constexpr std::size_t arrayHeaderLength = 14;

/// Reads all fields. The sides may be 0 or larger than pictures may be, but each is at most maximumSide.
Result<Header> readHeader(const ByteReader& reader);

/// The bytes of a file before the header proper. Pictures in icons do not have them.
inline constexpr std::size_t fileHeaderLength = 14;

/// The same for a picture in an icon. `reader` shows fileHeaderLength bytes before it, which are ignored, so
/// that offsets are as in a file. The height is that of the colours and of the mask together.
Result<Header> readIconHeader(const ByteReader& reader);

} // namespace kestrine::bmp
