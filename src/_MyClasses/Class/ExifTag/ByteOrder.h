// Byte order and keys of EXIF tags. The host is little-endian, as every machine this system is built for.
#pragma once

#include <cstdint>
#include <string>

namespace kestrine {

/// The key of `tag` in a directory's dictionary: four upper-case hexadecimal digits, such as "0112".
std::string keyForTag(std::uint16_t tag);

/// Reverses the two bytes in place and returns the number they then are.
std::uint16_t invertByteOrder16(void* bytes);
/// Reverses the four bytes in place and returns the number they then are.
std::uint32_t invertByteOrder32(void* bytes);
/// Reverses the eight bytes in place and returns the number they then are.
std::uint64_t invertByteOrder64(void* bytes);

} // namespace kestrine
