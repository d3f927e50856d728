#include "platform/coregraphics/kernels/ResampleRows_reference.h"

namespace kestrine::kernels::reference {

void addWeightedRow(std::span<float* const> sums, std::span<const float> weights, const float* row,
                    std::size_t samples) {
    for (std::size_t k = 0; k < sums.size(); ++k)
        for (std::size_t i = 0; i < samples; ++i)
            sums[k][i] += weights[k] * row[i];
}

void weighPixels(const float* row, std::size_t channels, const PixelWeights& weights, float* result) {
    for (std::size_t i = 0; i < weights.firsts.size(); ++i) {
        const float* pixels = row + weights.firsts[i] * channels;
        const float* w = weights.weights + weights.starts[i];
        const std::size_t count = weights.starts[i + 1] - weights.starts[i];
        for (std::size_t c = 0; c < channels; ++c) {
            float part[4] = {0, 0, 0, 0};
            for (std::size_t t = 0; t < count; ++t)
                part[channels == 1 ? t % 4 : 0] += w[t] * pixels[t * channels + c];
            result[i * channels + c] = channels == 1 ? (part[0] + part[2]) + (part[1] + part[3]) : part[0];
        }
    }
}

} // namespace kestrine::kernels::reference
