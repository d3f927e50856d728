#include "platform/coregraphics/kernels/StoredIndexes_reference.h"

#include <algorithm>
#include <cmath>

namespace kestrine::kernels::reference {

namespace {

/// 0 for NaN.
float clamped(float value) { return value > 0.0F ? std::min(value, 1.0F) : 0.0F; }

std::uint16_t rounded(float value) { return static_cast<std::uint16_t>(value + 0.5F); }

} // namespace

void squareRootIndexes(const float* light, std::size_t count, float top, std::uint16_t* indexes) {
    for (std::size_t i = 0; i < count; ++i)
        indexes[i] = rounded(std::sqrt(clamped(light[i])) * top);
}

void linearIndexes(const float* values, std::size_t count, float top, std::uint16_t* indexes) {
    for (std::size_t i = 0; i < count; ++i)
        indexes[i] = rounded(clamped(values[i]) * top);
}

} // namespace kestrine::kernels::reference
