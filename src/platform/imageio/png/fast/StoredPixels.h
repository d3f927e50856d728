// StoredPixels: converts the bytes of an unfiltered PNG row to the delivered pixels.
#pragma once

#include "platform/imageio/png/LibraryReader.h"

#include <array>

namespace kestrine::png {

class StoredPixels {
public:
    /// The header of `file` must have been read; its pixels must be whole bytes.
    explicit StoredPixels(const LibraryReader& file);

    /// Fills `row`, a whole delivered row.
    void convert(const std::uint8_t* stored, std::span<std::uint8_t> row) const;

private:
    void readColors(const LibraryReader& file);

    const RowFormat format_;
    const bool isIndexed_;
    std::array<std::array<std::uint8_t, 4>, 256> colors_{}; ///< red, green, blue, alpha by index
};

} // namespace kestrine::png
