// TypedStreamFormat: the constants that reading and writing a typedstream share.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace kestrine::typedstream {

/// The first byte of every archive; older streamers laid objects out differently.
inline constexpr std::uint8_t streamerVersion = 4;

/// The signature tells the byte order of multi-byte integers and raw floats.
inline constexpr std::string_view littleEndianSignature = "streamtyped";
inline constexpr std::string_view bigEndianSignature = "typedstream";

/// What writers put behind the signature; readers take any integer.
inline constexpr std::int64_t systemVersion = 1000;

/// First bytes with a meaning of their own. All others of 0x80 to 0x91 are reserved; the rest are small
/// integers.
enum Head : std::uint8_t {
    shortInteger = 0x81, ///< two bytes follow
    longInteger = 0x82,  ///< four bytes follow
    rawFloat = 0x83,     ///< a float or a double follows
    fresh = 0x84,        ///< a string, class or object follows for the first time
    nil = 0x85,
    endOfObject = 0x86,
    wideInteger = 0x87, ///< eight bytes follow
};
inline constexpr std::uint8_t lastReservedHead = 0x91;

/// Entry n of either table is referred to as n + firstReference.
inline constexpr std::int64_t firstReference = -110;

/// Objects within objects; also superclasses in a row and brackets within type strings.
inline constexpr std::size_t depthLimit = 200;
/// Values in one archive, those that take no byte included.
inline constexpr std::size_t valueLimit = std::size_t{1} << 20;
/// Bytes that objects may be unfolded into or compared by, all in all. A shared object is met again and
/// again, so the archive's length is no bound for that.
inline constexpr std::size_t workLimit = std::size_t{1} << 26;

} // namespace kestrine::typedstream
