// Plain loops with the results of ResampleRows.h, as a reference for the vectorised functions.
#pragma once

#include "platform/coregraphics/kernels/ResampleRows.h"

namespace kestrine::kernels::reference {

void addWeightedRows(std::span<float* const> sums, const float* weights, std::span<const float* const> rows,
                     std::size_t samples);
void weighRows(std::span<const float* const> rows, std::size_t channels, const PixelWeights& weights,
               std::span<float* const> results);

} // namespace kestrine::kernels::reference
