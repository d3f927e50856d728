#include "platform/imageio/png/fast/RowFilter.h"

#include "platform/imageio/png/kernels/PNGFilters.h"

#include <gtest/gtest.h>
#include <random>

namespace kestrine::png {

namespace {

using kernels::PNGFilter;

constexpr std::uint32_t width = 50;

Bytes randomRow(unsigned seed) {
    std::mt19937 random(seed);
    Bytes row(width);
    for (std::uint8_t& sample : row)
        sample = static_cast<std::uint8_t>(random());
    return row;
}

/// The filter of the last row.
PNGFilter filterOfLast(std::initializer_list<Bytes> rows) {
    RowFilter filter({width, static_cast<std::uint32_t>(rows.size()), ColorModel::gray});
    Bytes filtered(filter.filteredBytes());
    for (const Bytes& row : rows)
        filter.filter(row, filtered.data());
    return static_cast<PNGFilter>(filtered[0]);
}

} // namespace

TEST(RowFilter, aRepeatedRowIsPredictedFromAbove) {
    EXPECT_EQ(filterOfLast({randomRow(1), randomRow(1)}), PNGFilter::up);
    EXPECT_EQ(filterOfLast({randomRow(1), randomRow(2), randomRow(2)}), PNGFilter::up);
}

TEST(RowFilter, aConstantRowIsPredictedFromTheLeft) {
    EXPECT_EQ(filterOfLast({randomRow(1), Bytes(width, 100)}), PNGFilter::sub);
}

} // namespace kestrine::png
