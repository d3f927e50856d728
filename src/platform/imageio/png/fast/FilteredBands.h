// FilteredBands: unfilters the rows of a PNG file, a band of several rows at a time.
#pragma once

#include "platform/imageio/png/fast/InflatedPixels.h"
#include "platform/imageio/png/kernels/PNGFilters.h"

#include <cstddef>

namespace kestrine::png {

class FilteredBands {
public:
    /// Reads `height` rows of `rowBytes` bytes from `pixels`. `bytesPerPixel` is that of the stored pixels:
    /// 1, 2, 3, 4, 6 or 8.
    FilteredBands(InflatedPixels& pixels, std::size_t rowBytes, std::size_t bytesPerPixel,
                  std::uint32_t height);

    /// The next row, valid until the next call; null when the stream ends or is invalid.
    const std::uint8_t* next();

private:
    bool readBand();
    bool unfilterBand();
    /// Unfiltered row `i` of the band, from 1 on, between its margins; row 0 is the last row of the previous
    /// band.
    std::uint8_t* row(std::size_t i);
    const std::uint8_t* filteredRow(std::size_t i) const { return filtered_.data() + i * (rowBytes_ + 1); }
    /// The consecutive rows with the paeth filter from filtered row `i` on, at most paethRowsAtOnce.
    kernels::PaethRows paethRowsFrom(std::size_t i);

    InflatedPixels& pixels_;
    const std::size_t rowBytes_, bytesPerPixel_, rowsPerBand_;
    std::uint32_t left_; ///< rows after the band
    Bytes filtered_;     ///< each row after the number of its filter
    Bytes rows_;
    std::size_t count_ = 0, position_ = 0; ///< rows in the band, and delivered ones
};

} // namespace kestrine::png
