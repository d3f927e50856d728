// The inner loops of resampling, on rows of single-precision samples. Vectorised, chosen at run time.
// Every target gives the same bits as the plain loops of ResampleRows_reference.h: products and sums are
// rounded one by one, in the order stated here.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace kestrine::kernels {

/// Rows given to weighRows, sources and results, must have this many floats behind their last sample; those
/// of sources are read, so they must be finite, those of results are written.
inline constexpr std::size_t rowPadding = 4;

/// How many rows addWeightedRows takes at most.
inline constexpr std::size_t mostRowsAdded = 4;

/// For each k: sums[k][i] += weights[k * n + r] * rows[r][i] for r = 0, 1, .. n - 1 in turn, n being the
/// number of rows (1 to mostRowsAdded), for i in [0, samples).
void addWeightedRows(std::span<float* const> sums, const float* weights, std::span<const float* const> rows,
                     std::size_t samples);

/// How a result row takes from a source row: pixel i uses the weights [starts[i], starts[i + 1]) on the
/// source pixels from firsts[i] on. Neither the first nor the last source pixel of a result ever decreases
/// with i.
struct PixelWeights {
    std::span<const std::uint32_t> firsts;
    std::span<const std::size_t> starts;
    const float* weights;
};

/// How many rows weighRows takes at most; it takes about as long for fewer.
inline constexpr std::size_t mostRowsWeighed = 8;

/// Makes results[r] from rows[r], 1 to mostRowsWeighed of them, whose pixels have `channels` (1 to 4)
/// samples. A sample is the sum over its weights in their order.
void weighRows(std::span<const float* const> rows, std::size_t channels, const PixelWeights& weights,
               std::span<float* const> results);

} // namespace kestrine::kernels
