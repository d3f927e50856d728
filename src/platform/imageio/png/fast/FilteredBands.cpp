#include "platform/imageio/png/fast/FilteredBands.h"

#include <algorithm>
#include <cstring>

namespace kestrine::png {

namespace {

// Every call of inflate copies the last 32 KiB of output, so a call should deliver much more than that; but a
// band should fit the cache of a core.
constexpr std::size_t bandBytes = std::size_t{256} << 10;
constexpr std::size_t readableAfter = 8; // required by the kernels

/// The number of rows that fit a band, rounded up to a multiple of the rows that the kernels take at once; 1
/// if rows are huge.
std::size_t rowsPerBandFor(std::size_t filteredBytes, std::size_t height) {
    constexpr std::size_t hugeRow = 4 * bandBytes, step = kernels::paethRowsAtOnce;
    if (filteredBytes > hugeRow)
        return 1;
    const std::size_t fitting = bandBytes / filteredBytes;
    return std::min((std::max<std::size_t>(1, fitting) + step - 1) / step * step, height);
}

} // namespace

FilteredBands::FilteredBands(InflatedPixels& pixels, std::size_t rowBytes, std::size_t bytesPerPixel,
                             std::uint32_t height)
    : pixels_(pixels), rowBytes_(rowBytes), bytesPerPixel_(bytesPerPixel),
      rowsPerBand_(rowsPerBandFor(rowBytes + 1, height)), left_(height),
      filtered_(rowsPerBand_ * (rowBytes + 1) + readableAfter),
      rows_((rowsPerBand_ + 1) * (rowBytes + 2 * kernels::pngRowMargin)) {}

const std::uint8_t* FilteredBands::next() {
    if (position_ == count_ && !readBand())
        return nullptr;
    return row(++position_);
}

bool FilteredBands::readBand() {
    std::memcpy(row(0), row(count_), rowBytes_);
    count_ = std::min<std::size_t>(left_, rowsPerBand_);
    left_ -= static_cast<std::uint32_t>(count_);
    position_ = 0;
    return pixels_.read(std::span(filtered_).first(count_ * (rowBytes_ + 1))) && unfilterBand();
}

bool FilteredBands::unfilterBand() {
    for (std::size_t i = 0; i < count_;) {
        const std::uint8_t filter = *filteredRow(i);
        if (filter >= kernels::pngFilters)
            return false;
        if (static_cast<kernels::PNGFilter>(filter) == kernels::PNGFilter::paeth) {
            const kernels::PaethRows job = paethRowsFrom(i);
            kernels::unfilterPaethRows(bytesPerPixel_, job, rowBytes_);
            i += job.rowCount;
        } else {
            kernels::unfilterPNGRow(static_cast<kernels::PNGFilter>(filter), bytesPerPixel_,
                                    filteredRow(i) + 1, row(i), row(i + 1), rowBytes_);
            ++i;
        }
    }
    return true;
}

kernels::PaethRows FilteredBands::paethRowsFrom(std::size_t i) {
    kernels::PaethRows job{.above = row(i)};
    for (; job.rowCount < kernels::paethRowsAtOnce && i < count_; ++i, ++job.rowCount) {
        if (*filteredRow(i) != static_cast<std::uint8_t>(kernels::PNGFilter::paeth))
            break;
        job.filtered[job.rowCount] = filteredRow(i) + 1;
        job.rows[job.rowCount] = row(i + 1);
    }
    return job;
}

std::uint8_t* FilteredBands::row(std::size_t i) {
    return rows_.data() + i * (rowBytes_ + 2 * kernels::pngRowMargin) + kernels::pngRowMargin;
}

} // namespace kestrine::png
