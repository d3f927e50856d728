// Byte order and keys of EXIF tags. Only little-endian hosts are supported.
#pragma once

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

} // namespace kestrine
