// TypedStreamFormat: constants of the typedstream format and limits for reading it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace kestrine::typedstream {

/// The first byte of every archive. Older versions have another layout of objects.
inline constexpr std::uint8_t streamerVersion = 4;

/// The signature determines the byte order of multi-byte integers and raw floats.
inline constexpr std::string_view littleEndianSignature = "streamtyped";
inline constexpr std::string_view bigEndianSignature = "typedstream";

/// Follows the signature. Readers accept any integer.
inline constexpr std::int64_t systemVersion = 1000;

/// First bytes with a special meaning. The other bytes from 0x80 to 0x91 are reserved; all remaining ones are
/// small integers.
enum Head : std::uint8_t {
    shortInteger = 0x81, ///< two bytes follow
    longInteger = 0x82,  ///< four bytes follow
    rawFloat = 0x83,     ///< a float or a double follows
    fresh = 0x84,        ///< a new string, class or object follows
    nil = 0x85,
    endOfObject = 0x86,
    wideInteger = 0x87, ///< eight bytes follow
};
inline constexpr std::uint8_t lastReservedHead = 0x91;

/// A reference to entry n of a table is stored as n + firstReference.
inline constexpr std::int64_t firstReference = -110;

/// The maximal nesting of objects, length of a chain of superclasses, and nesting of brackets in type
/// strings.
inline constexpr std::size_t depthLimit = 200;
/// The maximal number of values in an archive, including values without bytes.
inline constexpr std::size_t valueLimit = std::size_t{1} << 20;
/// The maximal number of bytes that classes may expand or compare in total. A shared object can be read many
/// times, so the length of the archive does not limit this work.
inline constexpr std::size_t workLimit = std::size_t{1} << 26;

} // namespace kestrine::typedstream
