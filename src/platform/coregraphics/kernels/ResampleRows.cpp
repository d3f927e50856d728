#include "platform/coregraphics/kernels/ResampleRows.h"

#include "platform/coregraphics/kernels/ResampleRows_reference.h"

#include <algorithm>
#include <array>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "platform/coregraphics/kernels/ResampleRows.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace kestrine::kernels::HWY_NAMESPACE {

#if HWY_TARGET == HWY_SCALAR // without vectors

using reference::addWeightedRows;
using reference::weighRows;

#else

namespace hn = hwy::HWY_NAMESPACE;

/// Adds one vector of each row to all sums. Each row is loaded only once.
template <std::size_t count, class D>
HWY_INLINE void addAt(D d, std::span<float* const> sums, const float* weights, const float* const* rows,
                      std::size_t i) {
    const auto row0 = hn::LoadU(d, rows[0] + i);
    const auto row1 = count > 1 ? hn::LoadU(d, rows[count > 1 ? 1 : 0] + i) : row0;
    const auto row2 = count > 2 ? hn::LoadU(d, rows[count > 2 ? 2 : 0] + i) : row0;
    const auto row3 = count > 3 ? hn::LoadU(d, rows[count > 3 ? 3 : 0] + i) : row0;
    for (std::size_t k = 0; k < sums.size(); ++k, weights += count) {
        auto sum = hn::Add(hn::LoadU(d, sums[k] + i), hn::Mul(hn::Set(d, weights[0]), row0));
        if constexpr (count > 1)
            sum = hn::Add(sum, hn::Mul(hn::Set(d, weights[1]), row1));
        if constexpr (count > 2)
            sum = hn::Add(sum, hn::Mul(hn::Set(d, weights[2]), row2));
        if constexpr (count > 3)
            sum = hn::Add(sum, hn::Mul(hn::Set(d, weights[3]), row3));
        hn::StoreU(sum, d, sums[k] + i);
    }
}

template <std::size_t count>
void addRows(std::span<float* const> sums, const float* weights, const float* const* rows,
             std::size_t samples) {
    const hn::ScalableTag<float> d;
    const std::size_t lanes = hn::Lanes(d);
    std::size_t i = 0;
    for (; i + lanes <= samples; i += lanes)
        addAt<count>(d, sums, weights, rows, i);
    for (; i < samples; ++i)
        addAt<count>(hn::FixedTag<float, 1>(), sums, weights, rows, i);
}

void addWeightedRows(std::span<float* const> sums, const float* weights, std::span<const float* const> rows,
                     std::size_t samples) {
    switch (rows.size()) {
    case 1:
        return addRows<1>(sums, weights, rows.data(), samples);
    case 2:
        return addRows<2>(sums, weights, rows.data(), samples);
    case 3:
        return addRows<3>(sums, weights, rows.data(), samples);
    default:
        return addRows<4>(sums, weights, rows.data(), samples);
    }
}

// Eight rows are weighed at once, one per lane, so that the sums of a pixel need no shuffling and one weight
// serves all rows. For this purpose stretches of the rows are interleaved sample by sample. A stretch of 16
// KiB fits the first-level cache.
constexpr std::size_t stretchSamples = 512;
using RowPointers = std::array<const float*, maxRowsWeighed>;
using ResultPointers = std::array<float*, maxRowsWeighed>;

/// Writes the columns of the 4 x 4 matrix with the rows a, b, c and e.
template <class D, class V>
HWY_INLINE void storeTransposed(D d, V a, V b, V c, V e, std::array<float*, 4> out) {
    const auto low0 = hn::InterleaveLower(d, a, c);
    const auto low1 = hn::InterleaveLower(d, b, e);
    const auto high0 = hn::InterleaveUpper(d, a, c);
    const auto high1 = hn::InterleaveUpper(d, b, e);
    hn::StoreU(hn::InterleaveLower(d, low0, low1), d, out[0]);
    hn::StoreU(hn::InterleaveUpper(d, low0, low1), d, out[1]);
    hn::StoreU(hn::InterleaveLower(d, high0, high1), d, out[2]);
    hn::StoreU(hn::InterleaveUpper(d, high0, high1), d, out[3]);
}

/// stretch[8 i + r] = rows[r][begin + i]. Reads and writes up to 3 more samples.
void interleave(const RowPointers& rows, std::size_t begin, std::size_t samples, float* stretch) {
    const hn::FixedTag<float, 4> d;
    for (std::size_t i = 0; i < samples; i += 4)
        for (std::size_t r = 0; r < maxRowsWeighed; r += 4) {
            float* out = stretch + maxRowsWeighed * i + r;
            storeTransposed(d, hn::LoadU(d, rows[r] + begin + i), hn::LoadU(d, rows[r + 1] + begin + i),
                            hn::LoadU(d, rows[r + 2] + begin + i), hn::LoadU(d, rows[r + 3] + begin + i),
                            {out, out + maxRowsWeighed, out + 2 * maxRowsWeighed, out + 3 * maxRowsWeighed});
        }
}

/// results[r][begin + i] = stretch[8 i + r]. Writes up to 3 more samples.
void separate(const float* stretch, std::size_t begin, std::size_t samples, const ResultPointers& results) {
    const hn::FixedTag<float, 4> d;
    for (std::size_t i = 0; i < samples; i += 4)
        for (std::size_t r = 0; r < maxRowsWeighed; r += 4) {
            const float* in = stretch + maxRowsWeighed * i + r;
            storeTransposed(d, hn::LoadU(d, in), hn::LoadU(d, in + maxRowsWeighed),
                            hn::LoadU(d, in + 2 * maxRowsWeighed), hn::LoadU(d, in + 3 * maxRowsWeighed),
                            {results[r] + begin + i, results[r + 1] + begin + i, results[r + 2] + begin + i,
                             results[r + 3] + begin + i});
        }
}

/// Weighs one pixel of as many rows as the vector has lanes.
template <std::size_t channels, class D>
HWY_INLINE void weighPixel(D d, const float* samples, std::span<const float> weights, float* result) {
    auto sum0 = hn::Zero(d), sum1 = sum0, sum2 = sum0, sum3 = sum0;
    for (const float weight : weights) {
        const auto w = hn::Set(d, weight);
        sum0 = hn::Add(sum0, hn::Mul(w, hn::Load(d, samples)));
        if constexpr (channels > 1)
            sum1 = hn::Add(sum1, hn::Mul(w, hn::Load(d, samples + maxRowsWeighed)));
        if constexpr (channels > 2)
            sum2 = hn::Add(sum2, hn::Mul(w, hn::Load(d, samples + 2 * maxRowsWeighed)));
        if constexpr (channels > 3)
            sum3 = hn::Add(sum3, hn::Mul(w, hn::Load(d, samples + 3 * maxRowsWeighed)));
        samples += channels * maxRowsWeighed;
    }
    hn::Store(sum0, d, result);
    if constexpr (channels > 1)
        hn::Store(sum1, d, result + maxRowsWeighed);
    if constexpr (channels > 2)
        hn::Store(sum2, d, result + 2 * maxRowsWeighed);
    if constexpr (channels > 3)
        hn::Store(sum3, d, result + 3 * maxRowsWeighed);
}

/// One past the last source pixel of result pixel i.
std::size_t endOf(const PixelWeights& weights, std::size_t i) {
    return weights.firsts[i] + (weights.starts[i + 1] - weights.starts[i]);
}

/// One past the last result pixel j such that the results [i, j] and their sources fit a stretch.
std::size_t stretchEnd(const PixelWeights& weights, std::size_t i, std::size_t channels) {
    const std::size_t pixels = stretchSamples / channels;
    const std::size_t end = std::min(weights.firsts.size(), i + pixels);
    std::size_t j = i;
    while (j < end && endOf(weights, j) - weights.firsts[i] <= pixels)
        ++j;
    return j;
}

/// Weighs the result pixels [i, j), whose sources fit a stretch.
template <std::size_t channels>
void weighStretch(const RowPointers& rows, const PixelWeights& weights, std::size_t i, std::size_t j,
                  const ResultPointers& results) {
    alignas(64) float sources[stretchSamples * maxRowsWeighed];
    alignas(64) float sums[stretchSamples * maxRowsWeighed];
    const hn::CappedTag<float, maxRowsWeighed> d;
    const std::size_t base = weights.firsts[i];
    interleave(rows, base * channels, (endOf(weights, j - 1) - base) * channels, sources);
    for (std::size_t k = i; k < j; ++k) {
        const std::span taps(weights.weights + weights.starts[k], weights.starts[k + 1] - weights.starts[k]);
        const float* from = sources + (weights.firsts[k] - base) * channels * maxRowsWeighed;
        float* to = sums + (k - i) * channels * maxRowsWeighed;
        for (std::size_t r = 0; r < maxRowsWeighed; r += hn::Lanes(d))
            weighPixel<channels>(d, from + r, taps, to + r);
    }
    separate(sums, i * channels, (j - i) * channels, results);
}

/// Weighs a result pixel that uses more source pixels than fit a stretch.
void weighLongPixel(const RowPointers& rows, std::size_t channels, const PixelWeights& weights, std::size_t i,
                    const ResultPointers& results) {
    const PixelWeights one = {weights.firsts.subspan(i, 1), weights.starts.subspan(i, 2), weights.weights};
    ResultPointers places;
    std::ranges::transform(results, places.begin(), [&](float* result) { return result + i * channels; });
    reference::weighRows(rows, channels, one, places);
}

template <std::size_t channels>
void weighEight(const RowPointers& rows, const PixelWeights& weights, const ResultPointers& results) {
    for (std::size_t i = 0; i < weights.firsts.size();) {
        const std::size_t j = stretchEnd(weights, i, channels);
        if (j > i)
            weighStretch<channels>(rows, weights, i, j, results);
        else
            weighLongPixel(rows, channels, weights, i, results);
        i = std::max(i + 1, j);
    }
}

void weighRows(std::span<const float* const> rows, std::size_t channels, const PixelWeights& weights,
               std::span<float* const> results) {
    RowPointers from;
    ResultPointers to;
    for (std::size_t r = 0; r < maxRowsWeighed;
         ++r) { // with fewer rows the last one is computed several times
        from[r] = rows[std::min(r, rows.size() - 1)];
        to[r] = results[std::min(r, rows.size() - 1)];
    }
    switch (channels) {
    case 1:
        return weighEight<1>(from, weights, to);
    case 2:
        return weighEight<2>(from, weights, to);
    case 3:
        return weighEight<3>(from, weights, to);
    default:
        return weighEight<4>(from, weights, to);
    }
}

#endif

} // namespace kestrine::kernels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kestrine::kernels {

HWY_EXPORT(addWeightedRows);
HWY_EXPORT(weighRows);

void addWeightedRows(std::span<float* const> sums, const float* weights, std::span<const float* const> rows,
                     std::size_t samples) {
    HWY_DYNAMIC_DISPATCH(addWeightedRows)(sums, weights, rows, samples);
}

void weighRows(std::span<const float* const> rows, std::size_t channels, const PixelWeights& weights,
               std::span<float* const> results) {
    HWY_DYNAMIC_DISPATCH(weighRows)(rows, channels, weights, results);
}

} // namespace kestrine::kernels
#endif
