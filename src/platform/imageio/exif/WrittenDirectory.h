// WrittenDirectory: the fields of an EXIF directory that is to be written, in big-endian order.
#pragma once

#include "platform/host/Bytes.h"

#include <map>

namespace kestrine {

struct ExifField {
    std::uint16_t type;
    std::uint32_t count;
    Bytes value; ///< big-endian

    /// Size in bytes outside the directory; 0 if the entry itself holds the value. Values begin at even
    /// offsets.
    std::size_t sizeOutside() const;
};

/// By tag.
using ExifFields = std::map<std::uint16_t, ExifField>;

ExifField exifShortField(std::uint16_t number);
ExifField exifLongField(std::uint32_t number);

/// What appendDirectory() adds, in bytes.
std::uint32_t sizeOfDirectory(const ExifFields& fields);

/// Appends the directory and the values outside of it. No directory follows it. Adds nothing if there are no
/// fields. `block` begins with the header of the whole block.
void appendDirectory(Bytes& block, const ExifFields& fields);

} // namespace kestrine
