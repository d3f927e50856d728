// From filtered floats to whole numbers, the vectorised part of storing a row.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kestrine::kernels {

/// indexes[i] = round-half-up(sqrt(clamp(light[i], 0, 1)) * top); NaN counts as 0.
void squareRootIndexes(const float* light, std::size_t count, float top, std::uint16_t* indexes);

/// indexes[i] = round-half-up(clamp(values[i], 0, 1) * top); NaN counts as 0.
void linearIndexes(const float* values, std::size_t count, float top, std::uint16_t* indexes);

} // namespace kestrine::kernels
