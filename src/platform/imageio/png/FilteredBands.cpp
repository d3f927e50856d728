#include "platform/imageio/png/FilteredBands.h"

#include "platform/coregraphics/kernels/PNGFilters.h"

#include <algorithm>
#include <cstring>

namespace kestrine {

namespace {

// Inflating keeps 32 KiB of what went before at every call, so a call should give much more than that; but
// the band should stay in a core's cache.
constexpr std::size_t bandBytes = std::size_t{256} << 10;
constexpr std::size_t readableBehind = 8; // what the kernels want

} // namespace

FilteredBands::FilteredBands(InflatedPixels& pixels, std::size_t rowBytes, std::size_t bytesPerPixel,
                             std::uint32_t height)
    : pixels_(pixels), rowBytes_(rowBytes), bytesPerPixel_(bytesPerPixel),
      rowsABand_(std::clamp<std::size_t>(bandBytes / (rowBytes + 1), 1, height)), left_(height),
      filtered_(rowsABand_ * (rowBytes + 1) + readableBehind),
      rows_((rowsABand_ + 1) * (rowBytes + 2 * kernels::pngRowMargin)) {}

const std::uint8_t* FilteredBands::next() {
    if (position_ == count_ && !readBand())
        return nullptr;
    return row(++position_);
}

bool FilteredBands::readBand() {
    std::memcpy(row(0), row(count_), rowBytes_);
    count_ = std::min<std::size_t>(left_, rowsABand_);
    left_ -= static_cast<std::uint32_t>(count_);
    position_ = 0;
    return pixels_.read(std::span(filtered_).first(count_ * (rowBytes_ + 1))) && unfilterBand();
}

bool FilteredBands::unfilterBand() {
    for (std::size_t i = 0; i < count_; ++i) {
        const std::uint8_t filter = *filteredRow(i);
        if (filter >= kernels::pngFilters)
            return false;
        if (arePaethRows(i)) {
            kernels::unfilterPaethRows(
                bytesPerPixel_,
                {filteredRow(i) + 1, filteredRow(i + 1) + 1, filteredRow(i + 2) + 1, filteredRow(i + 3) + 1},
                row(i), {row(i + 1), row(i + 2), row(i + 3), row(i + 4)}, rowBytes_);
            i += kernels::paethRowsAtOnce - 1;
        } else {
            kernels::unfilterPNGRow(static_cast<kernels::PNGFilter>(filter), bytesPerPixel_,
                                    filteredRow(i) + 1, row(i), row(i + 1), rowBytes_);
        }
    }
    return true;
}

bool FilteredBands::arePaethRows(std::size_t i) const {
    static_assert(kernels::paethRowsAtOnce == 4);
    const auto isPaeth = [&](std::size_t r) {
        return *filteredRow(r) == static_cast<std::uint8_t>(kernels::PNGFilter::paeth);
    };
    return i + 4 <= count_ && isPaeth(i) && isPaeth(i + 1) && isPaeth(i + 2) && isPaeth(i + 3);
}

std::uint8_t* FilteredBands::row(std::size_t i) {
    return rows_.data() + i * (rowBytes_ + 2 * kernels::pngRowMargin) + kernels::pngRowMargin;
}

} // namespace kestrine
