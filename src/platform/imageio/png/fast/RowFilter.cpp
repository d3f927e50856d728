#include "platform/imageio/png/fast/RowFilter.h"

#include "platform/imageio/png/fast/BigEndianWords.h"
#include "platform/imageio/png/kernels/PNGFilters.h"

#include <algorithm>
#include <cstring>

namespace kestrine::png {

RowFilter::RowFilter(const RowFormat& format)
    : bytesPerPixel_(format.bytesPerPixel()), rowBytes_(format.bytesPerRow()),
      hasWords_(format.depth == SampleDepth::bits16), row_(rowBytes_ + 2 * kernels::pngRowMargin),
      above_(row_.size()) {}

void RowFilter::filter(ByteView row, std::uint8_t* filtered) {
    row_.swap(above_);
    std::uint8_t* const stored = row_.data() + kernels::pngRowMargin;
    const std::uint8_t* const above = above_.data() + kernels::pngRowMargin;
    if (hasWords_)
        copyBigEndianWords(row, stored);
    else
        std::memcpy(stored, row.data(), row.size());
    const auto sums = kernels::pngFilterSums(bytesPerPixel_, stored, above, rowBytes_);
    const auto best = std::min_element(sums.begin(), sums.end()) - sums.begin();
    filtered[0] = static_cast<std::uint8_t>(best);
    kernels::filterPNGRow(static_cast<kernels::PNGFilter>(best), bytesPerPixel_, stored, above, filtered + 1,
                          rowBytes_);
}

} // namespace kestrine::png
