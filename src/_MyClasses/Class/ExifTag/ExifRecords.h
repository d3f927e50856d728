// The records of a JPEG file's EXIF segment, in the layout of the file.
#pragma once

#include <array>
#include <cstdint>

namespace kestrine {

/// The start of the APP1 segment, in the file's byte order.
struct ExifFileHeader {
    std::array<std::uint8_t, 2> marker;     ///< FF E1
    std::uint16_t length;                   ///< of the segment in bytes; not used
    std::array<std::uint8_t, 6> identifier; ///< "Exif" and two zero bytes
};
static_assert(sizeof(ExifFileHeader) == 10);

struct TiffHeader {
    std::array<char, 2> byteOrder; ///< "MM" or "II"
    std::uint16_t magic;           ///< 42
    std::uint32_t ifd0Offset;      ///< from the start of this header, like every offset
};
static_assert(sizeof(TiffHeader) == 8);

struct IfdEntry {
    std::uint16_t tag;
    std::uint16_t type;
    std::uint32_t count;
    /// The values if they fit, else their offset; in the file's byte order.
    std::array<std::uint8_t, 4> valueOrOffset;
};
static_assert(sizeof(IfdEntry) == 12);

} // namespace kestrine
