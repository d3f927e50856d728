// Byte order and keys of EXIF tags.
#pragma once

#include <bit>
#include <cstdint>
#include <string>

namespace kestrine {

/// The key of `tag` in a directory's dictionary: four upper-case hexadecimal digits, such as "0112".
std::string keyForTag(std::uint16_t tag);

/// Reverses two bytes in place and returns the resulting number.
std::uint16_t invertByteOrder16(void* bytes);
/// Reverses four bytes in place and returns the resulting number.
std::uint32_t invertByteOrder32(void* bytes);
/// Reverses eight bytes in place and returns the resulting number.
std::uint64_t invertByteOrder64(void* bytes);

/// Converts a number of big-endian data, read into `number` as it is, to the order of this processor.
inline void convertFromBigEndian(std::uint16_t& number) {
    if constexpr (std::endian::native == std::endian::little)
        invertByteOrder16(&number);
}
inline void convertFromBigEndian(std::uint32_t& number) {
    if constexpr (std::endian::native == std::endian::little)
        invertByteOrder32(&number);
}

} // namespace kestrine
