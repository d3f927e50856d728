// The inner loops of resampling, on rows of single-precision samples. Vectorised, chosen at run time. Every
// target gives the same bits as the plain loops in ResampleRows_reference.h: each product and each sum is
// rounded, in the order stated here.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace kestrine::kernels {

/// Rows given to weighRows must have this many floats after their last sample. In source rows they are read
/// and must be finite; in result rows they are written.
inline constexpr std::size_t rowPadding = 4;

/// The maximum number of rows for addWeightedRows.
inline constexpr std::size_t maxRowsAdded = 4;

/// For each k and each i in [0, samples): sums[k][i] += weights[k * n + r] * rows[r][i] for r = 0, 1, ..., n
/// - 1 in this order, where n is the number of rows, 1 to maxRowsAdded.
void addWeightedRows(std::span<float* const> sums, const float* weights, std::span<const float* const> rows,
                     std::size_t samples);

/// The weights of result pixel i are [starts[i], starts[i + 1]), for the source pixels from firsts[i] on.
/// Neither the first nor the last source pixel decreases with i.
struct PixelWeights {
    std::span<const std::uint32_t> firsts;
    std::span<const std::size_t> starts;
    const float* weights;
};

/// The maximum number of rows for weighRows. Fewer rows take nearly as long.
inline constexpr std::size_t maxRowsWeighed = 8;

/// Computes results[r] from rows[r], for 1 to maxRowsWeighed rows whose pixels have `channels` (1 to 4)
/// samples. Products are added in the order of the weights.
void weighRows(std::span<const float* const> rows, std::size_t channels, const PixelWeights& weights,
               std::span<float* const> results);

} // namespace kestrine::kernels
