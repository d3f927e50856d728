// FilteredBands: rows of a PNG file freed from their filters, several at a time.
#pragma once

#include "platform/imageio/png/kernels/PNGFilters.h"
#include "platform/imageio/png/fast/InflatedPixels.h"

#include <cstddef>

namespace kestrine::png {

class FilteredBands {
public:
    /// Of `height` rows with `rowBytes` bytes, `bytesPerPixel` (1, 2, 3, 4, 6 or 8) a pixel, as stored.
    FilteredBands(InflatedPixels& pixels, std::size_t rowBytes, std::size_t bytesPerPixel,
                  std::uint32_t height);

    /// The next row, valid until the next call; null when the stream does not hold one.
    const std::uint8_t* next();

private:
    bool readBand();
    bool unfilterBand();
    /// Row `i` of the band, between its margins; row 0 is the last one of the band before.
    std::uint8_t* row(std::size_t i);
    const std::uint8_t* filteredRow(std::size_t i) const { return filtered_.data() + i * (rowBytes_ + 1); }
    /// Those of the band's rows from `i` on that have the paeth filter, as many as go at once.
    kernels::PaethRows paethRowsFrom(std::size_t i);

    InflatedPixels& pixels_;
    const std::size_t rowBytes_, bytesPerPixel_, rowsABand_;
    std::uint32_t left_; ///< behind the band
    Bytes filtered_;     ///< each row behind its filter
    Bytes rows_;
    std::size_t count_ = 0, position_ = 0; ///< of the band's rows
};

} // namespace kestrine::png
