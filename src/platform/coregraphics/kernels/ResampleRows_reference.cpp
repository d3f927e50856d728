#include "platform/coregraphics/kernels/ResampleRows_reference.h"

namespace kestrine::kernels::reference {

namespace {

void weighRow(const float* row, std::size_t channels, const PixelWeights& weights, float* result) {
    for (std::size_t i = 0; i < weights.firsts.size(); ++i) {
        const float* pixels = row + weights.firsts[i] * channels;
        const float* w = weights.weights + weights.starts[i];
        const std::size_t count = weights.starts[i + 1] - weights.starts[i];
        for (std::size_t c = 0; c < channels; ++c) {
            float sum = 0;
            for (std::size_t t = 0; t < count; ++t)
                sum += w[t] * pixels[t * channels + c];
            result[i * channels + c] = sum;
        }
    }
}

} // namespace

void addWeightedRows(std::span<float* const> sums, const float* weights, std::span<const float* const> rows,
                     std::size_t samples) {
    for (std::size_t k = 0; k < sums.size(); ++k)
        for (std::size_t i = 0; i < samples; ++i)
            for (std::size_t r = 0; r < rows.size(); ++r)
                sums[k][i] += weights[k * rows.size() + r] * rows[r][i];
}

void weighRows(std::span<const float* const> rows, std::size_t channels, const PixelWeights& weights,
               std::span<float* const> results) {
    for (std::size_t r = 0; r < rows.size(); ++r)
        weighRow(rows[r], channels, weights, results[r]);
}

} // namespace kestrine::kernels::reference
