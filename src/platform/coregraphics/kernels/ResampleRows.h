// The inner loops of resampling, on rows of single-precision samples. Vectorised, chosen at run time.
// Every target gives the same bits as the plain loops of ResampleRows_reference.h: products and sums are
// rounded one by one, in the order stated here.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace kestrine::kernels {

/// Rows that weighPixels reads must have this many readable, finite floats behind their last sample.
inline constexpr std::size_t rowPadding = 16;

/// For each k: sums[k][i] += weights[k] * row[i], for i in [0, samples).
void addWeightedRow(std::span<float* const> sums, std::span<const float> weights, const float* row,
                    std::size_t samples);

/// One result row: pixel i has `channels` (1 to 4) samples and uses the weights [starts[i], starts[i + 1]) on
/// the source pixels from firsts[i] on. A channel is the sum over its weights in their order; a picture of a
/// single channel is summed in four parts p0..p3 (weight number modulo 4), put together as (p0 + p2) + (p1 +
/// p3). `result` has one writable float behind the last sample of a row of three channels.
struct PixelWeights {
    std::span<const std::uint32_t> firsts;
    std::span<const std::size_t> starts;
    const float* weights;
};
void weighPixels(const float* row, std::size_t channels, const PixelWeights& weights, float* result);

} // namespace kestrine::kernels
