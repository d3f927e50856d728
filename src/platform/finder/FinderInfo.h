// FinderInfo: 32 bytes of metadata that the Finder stores for a file or folder.
#pragma once

#include <array>
#include <cstdint>
#include <span>

namespace kestrine {

/// Four characters as a big-endian number: fourCharacterCode("TEXT").
constexpr std::uint32_t fourCharacterCode(const char (&text)[5]) {
    std::uint32_t code = 0;
    for (int i = 0; i < 4; ++i)
        code = code << 8 | static_cast<std::uint8_t>(text[i]);
    return code;
}

/// A position in a folder's window, in pixels from its upper left corner.
struct FinderLocation {
    std::int16_t vertical = 0;
    std::int16_t horizontal = 0;

    bool operator==(const FinderLocation&) const = default;
};

/// The fields are in the stored order.
struct FinderInfo {
    std::uint32_t type = 0;    ///< a four-character code, 0 for none
    std::uint32_t creator = 0; ///< a four-character code, 0 for none
    std::uint16_t flags = 0;
    FinderLocation location;
    std::uint16_t reserved = 0;
    std::array<std::uint8_t, 16> extended{}; ///< stored unchanged

    bool operator==(const FinderInfo&) const = default;
};

/// The stored form; numbers are big-endian.
std::array<std::uint8_t, 32> bytesOf(const FinderInfo& information);
FinderInfo finderInfoFromBytes(std::span<const std::uint8_t, 32> bytes);

} // namespace kestrine
