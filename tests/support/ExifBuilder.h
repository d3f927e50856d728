// Builds EXIF blocks in either byte order from lists of fields, and small JPEG files with them.
// Nothing is checked or sorted, so that tests can also build malformed blocks.
#pragma once

#include "platform/host/Bytes.h"

#include <string_view>
#include <vector>

namespace kestrine::testing {

enum class ExifOrder { bigEndian, littleEndian };

/// One directory entry. A value of up to four bytes is stored in the entry itself, independent of the count.
struct ExifField {
    std::uint16_t tag;
    std::uint16_t type;
    std::uint32_t count;
    Bytes value;               ///< big-endian
    std::uint8_t unitSize = 1; ///< size of the units whose bytes are reversed in a little-endian block
};

/// ASCII, with a zero byte at the end.
ExifField exifText(std::uint16_t tag, std::string_view text);
/// UNDEFINED, or another type whose values are single bytes (1, 2, 6).
ExifField exifBytes(std::uint16_t tag, Bytes bytes, std::uint16_t type = 7);
ExifField exifShorts(std::uint16_t tag, const std::vector<std::uint16_t>& numbers);
ExifField exifSignedShorts(std::uint16_t tag, const std::vector<std::int16_t>& numbers);
ExifField exifLongs(std::uint16_t tag, const std::vector<std::uint32_t>& numbers);
ExifField exifSignedLongs(std::uint16_t tag, const std::vector<std::int32_t>& numbers);
/// Numerator, denominator, numerator, denominator ...
ExifField exifRationals(std::uint16_t tag, const std::vector<std::uint32_t>& numbers);
ExifField exifSignedRationals(std::uint16_t tag, const std::vector<std::int32_t>& numbers);
ExifField exifFloats(std::uint16_t tag, const std::vector<float>& numbers);
ExifField exifDoubles(std::uint16_t tag, const std::vector<double>& numbers);

/// The directories of a block. Those without fields are left out. Pointers to the others are added after the
/// last field of their parent directory.
struct ExifContent {
    ExifOrder order = ExifOrder::bigEndian;
    std::vector<ExifField> ifd0{};
    std::vector<ExifField> exifSubIFD{};
    std::vector<ExifField> interoperabilityIFD{};
    std::vector<ExifField> gpsIFD{};
    std::vector<ExifField> ifd1{};
    std::vector<ExifField> interoperabilityIFD2{}; ///< below ifd1
    /// Writes the offset of ifd1 in little-endian order always, as ExifTagReader reads it.
    bool nextOffsetIsLittleEndian = false;
};

/// The block from the TIFF header on.
Bytes exifBlock(const ExifContent& content);

/// A whole segment with marker FF `code`.
Bytes jpegSegment(std::uint8_t code, ByteView content);
/// APP1 with "Exif" before the block, which must have at most 65527 bytes.
Bytes exifSegment(ByteView block);
/// The 18 bytes of a JFIF APP0 without resolution.
Bytes jfifSegment();

/// A grey JPEG picture of 8 x 8 pixels that every decoder can read, with these segments directly after SOI.
Bytes jpegFile(const std::vector<Bytes>& segments);
/// The same with only the EXIF segment.
Bytes jpegFile(const ExifContent& content);

} // namespace kestrine::testing
