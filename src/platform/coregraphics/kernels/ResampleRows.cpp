#include "platform/coregraphics/kernels/ResampleRows.h"

#include "platform/coregraphics/kernels/ResampleRows_reference.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "platform/coregraphics/kernels/ResampleRows.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace kestrine::kernels::HWY_NAMESPACE {

#if HWY_TARGET == HWY_SCALAR // a processor without vectors runs the plain loops

using reference::addWeightedRow;
using reference::weighPixels;

#else

namespace hn = hwy::HWY_NAMESPACE;

void addWeightedRow(std::span<float* const> sums, std::span<const float> weights, const float* row,
                    std::size_t samples) {
    const hn::ScalableTag<float> d;
    const std::size_t lanes = hn::Lanes(d);
    std::size_t i = 0;
    for (; i + lanes <= samples; i += lanes) {
        const auto value = hn::LoadU(d, row + i);
        for (std::size_t k = 0; k < sums.size(); ++k) {
            const auto product = hn::Mul(hn::Set(d, weights[k]), value);
            hn::StoreU(hn::Add(hn::LoadU(d, sums[k] + i), product), d, sums[k] + i);
        }
    }
    for (; i < samples; ++i)
        for (std::size_t k = 0; k < sums.size(); ++k)
            sums[k][i] += weights[k] * row[i];
}

/// Two, three or four channels: a pixel's channels lie side by side in one vector. Three take a fourth lane
/// along, the next pixel's first sample, which the following store overwrites.
template <std::size_t channels>
void weighColorPixels(const float* row, const PixelWeights& weights, float* result) {
    const hn::FixedTag<float, channels == 2 ? 2 : 4> d;
    for (std::size_t i = 0; i < weights.firsts.size(); ++i) {
        const float* pixel = row + weights.firsts[i] * channels;
        auto sum = hn::Zero(d);
        for (std::size_t t = weights.starts[i]; t < weights.starts[i + 1]; ++t, pixel += channels)
            sum = hn::Add(sum, hn::Mul(hn::Set(d, weights.weights[t]), hn::LoadU(d, pixel)));
        hn::StoreU(sum, d, result + i * channels);
    }
}

void weighGrayPixels(const float* row, const PixelWeights& weights, float* result) {
    const hn::FixedTag<float, 4> d;
    for (std::size_t i = 0; i < weights.firsts.size(); ++i) {
        const float* pixel = row + weights.firsts[i];
        const float* w = weights.weights + weights.starts[i];
        const std::size_t count = weights.starts[i + 1] - weights.starts[i];
        auto sum = hn::Zero(d);
        std::size_t t = 0;
        for (; t + 4 <= count; t += 4)
            sum = hn::Add(sum, hn::Mul(hn::LoadU(d, w + t), hn::LoadU(d, pixel + t)));
        alignas(16) float part[4];
        hn::Store(sum, d, part);
        for (; t < count; ++t)
            part[t % 4] += w[t] * pixel[t];
        result[i] = (part[0] + part[2]) + (part[1] + part[3]);
    }
}

void weighPixels(const float* row, std::size_t channels, const PixelWeights& weights, float* result) {
    switch (channels) {
    case 1:
        return weighGrayPixels(row, weights, result);
    case 2:
        return weighColorPixels<2>(row, weights, result);
    case 3:
        return weighColorPixels<3>(row, weights, result);
    default:
        return weighColorPixels<4>(row, weights, result);
    }
}

#endif

} // namespace kestrine::kernels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kestrine::kernels {

HWY_EXPORT(addWeightedRow);
HWY_EXPORT(weighPixels);

void addWeightedRow(std::span<float* const> sums, std::span<const float> weights, const float* row,
                    std::size_t samples) {
    HWY_DYNAMIC_DISPATCH(addWeightedRow)(sums, weights, row, samples);
}

void weighPixels(const float* row, std::size_t channels, const PixelWeights& weights, float* result) {
    HWY_DYNAMIC_DISPATCH(weighPixels)(row, channels, weights, result);
}

} // namespace kestrine::kernels
#endif
