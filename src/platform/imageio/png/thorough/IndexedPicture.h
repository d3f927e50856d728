// IndexedPicture: a picture with few colours as a palette and indices.
#pragma once

#include "platform/coregraphics/RowSource.h"
#include "platform/host/Bytes.h"

#include <optional>
#include <variant>
#include <vector>

namespace kestrine::png {

struct PaletteColor {
    std::uint8_t red, green, blue, alpha;

    bool operator==(const PaletteColor&) const = default;
};

struct IndexedPicture {
    std::uint32_t width = 0, height = 0;
    std::vector<PaletteColor>
        palette;      ///< at most 256; those that are not opaque come first, then by brightness
    Bytes indices;    ///< a byte per pixel
    int bits() const; ///< 1, 2, 4 or 8, as many as an index needs
};

/// Reads a picture of 8 bits per sample. If it has at most `maxColors` colours, which are at most 256, the
/// result is indexed; otherwise the same picture as rows, of which only few were held. `rows` must outlive
/// the result.
Result<std::variant<IndexedPicture, RowSourcePointer>> indexedIfPossible(RowSource& rows,
                                                                         std::size_t maxColors);

} // namespace kestrine::png
