#include "platform/imageio/png/kernels/PNGFilters_reference.h"

#include <algorithm>
#include <cstdlib>

namespace kestrine::kernels::reference {

std::uint8_t predictedByte(PNGFilter filter, int left, int above, int aboveLeft) {
    const auto paeth = [&] {
        const int estimate = left + above - aboveLeft;
        const int toLeft = std::abs(estimate - left), toAbove = std::abs(estimate - above);
        const int toAboveLeft = std::abs(estimate - aboveLeft);
        if (toLeft <= toAbove && toLeft <= toAboveLeft)
            return left;
        return toAbove <= toAboveLeft ? above : aboveLeft;
    };
    const int predicted = filter == PNGFilter::sub       ? left
                          : filter == PNGFilter::up      ? above
                          : filter == PNGFilter::average ? (left + above) / 2
                          : filter == PNGFilter::paeth   ? paeth()
                                                         : 0;
    return static_cast<std::uint8_t>(predicted);
}

void unfilterPNGRow(PNGFilter filter, std::size_t bytesPerPixel, const std::uint8_t* filtered,
                    const std::uint8_t* above, std::uint8_t* row, std::size_t count) {
    const auto* const left = row - bytesPerPixel;
    const auto* const aboveLeft = above - bytesPerPixel;
    for (std::size_t i = 0; i < count; ++i)
        row[i] =
            static_cast<std::uint8_t>(filtered[i] + predictedByte(filter, left[i], above[i], aboveLeft[i]));
}

void unfilterPaethRows(std::size_t bytesPerPixel, const PaethRows& job, std::size_t count) {
    const std::uint8_t* above = job.above;
    for (std::size_t r = 0; r < job.rowCount; above = job.rows[r++])
        reference::unfilterPNGRow(PNGFilter::paeth, bytesPerPixel, job.filtered[r], above, job.rows[r],
                                  count);
}

std::array<std::uint64_t, pngFilters> pngFilterSums(std::size_t bytesPerPixel, const std::uint8_t* row,
                                                    const std::uint8_t* above, std::size_t count) {
    std::array<std::uint64_t, pngFilters> sums{};
    const auto* const left = row - bytesPerPixel;
    const auto* const aboveLeft = above - bytesPerPixel;
    for (std::size_t f = 0; f < pngFilters; ++f)
        for (std::size_t i = 0; i < count; ++i) {
            const std::uint8_t predicted =
                predictedByte(static_cast<PNGFilter>(f), left[i], above[i], aboveLeft[i]);
            const auto difference = static_cast<std::uint8_t>(row[i] - predicted);
            sums[f] += static_cast<std::uint64_t>(std::min<int>(difference, 256 - difference));
        }
    return sums;
}

void filterPNGRow(PNGFilter filter, std::size_t bytesPerPixel, const std::uint8_t* row,
                  const std::uint8_t* above, std::uint8_t* filtered, std::size_t count) {
    const auto* const left = row - bytesPerPixel;
    const auto* const aboveLeft = above - bytesPerPixel;
    for (std::size_t i = 0; i < count; ++i)
        filtered[i] =
            static_cast<std::uint8_t>(row[i] - predictedByte(filter, left[i], above[i], aboveLeft[i]));
}

} // namespace kestrine::kernels::reference
