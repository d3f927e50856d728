// FinderInfo: the 32 bytes that the Finder keeps beside a file or folder.
#pragma once

#include <array>
#include <cstdint>
#include <span>

namespace kestrine {

/// Four characters as one number, first character highest: fourCharacterCode("TEXT").
constexpr std::uint32_t fourCharacterCode(const char (&text)[5]) {
    std::uint32_t code = 0;
    for (int i = 0; i < 4; ++i)
        code = code << 8 | static_cast<std::uint8_t>(text[i]);
    return code;
}

/// A place in a folder's window: down and to the right of its corner, in pixels.
struct FinderLocation {
    std::int16_t vertical = 0;
    std::int16_t horizontal = 0;

    bool operator==(const FinderLocation&) const = default;
};

/// In the order in which the platform stores the fields, numbers big-endian.
struct FinderInfo {
    std::uint32_t type = 0;    ///< a four-character code; 0 is none
    std::uint32_t creator = 0; ///< likewise
    std::uint16_t flags = 0;
    FinderLocation location;
    std::uint16_t reserved = 0;
    std::array<std::uint8_t, 16> extended{}; ///< kept as found

    /// The colour label, 0 (none) to 7: bits 1 to 3 of the flags.
    int label() const { return (flags & 0x000E) >> 1; }
    /// Bit 15 of the flags.
    bool isAlias() const { return (flags & 0x8000) != 0; }

    bool operator==(const FinderInfo&) const = default;
};

/// The stored form.
std::array<std::uint8_t, 32> bytesOf(const FinderInfo& information);
FinderInfo finderInfoFromBytes(std::span<const std::uint8_t, 32> bytes);

} // namespace kestrine
