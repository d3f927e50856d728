// StoredPixels: from the bytes of a PNG row to the pixels that are delivered.
#pragma once

#include "platform/imageio/png/LibraryReader.h"

#include <array>

namespace kestrine::png {

class StoredPixels {
public:
    /// Of a file whose header has been read, with whole bytes a pixel.
    explicit StoredPixels(const LibraryReader& file);

    /// `row` is a whole delivered row.
    void convert(const std::uint8_t* stored, std::span<std::uint8_t> row) const;

private:
    void readColors(const LibraryReader& file);

    const RowFormat format_;
    const bool isIndexed_;
    std::array<std::array<std::uint8_t, 4>, 256> colors_{}; ///< red, green, blue, alpha of an index
};

} // namespace kestrine::png
