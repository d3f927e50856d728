// The plain truth of ResampleRows.h, as oracle for its vectorised form.
#pragma once

#include "platform/coregraphics/kernels/ResampleRows.h"

namespace kestrine::kernels::reference {

void addWeightedRow(std::span<float* const> sums, std::span<const float> weights, const float* row,
                    std::size_t samples);
void weighPixels(const float* row, std::size_t channels, const PixelWeights& weights, float* result);

} // namespace kestrine::kernels::reference
