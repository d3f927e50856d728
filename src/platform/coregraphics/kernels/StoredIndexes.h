// Converts filtered floats to table indexes or samples. Vectorised, chosen at run time; every target gives
// the same numbers.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kestrine::kernels {

/// indexes[i] = sqrt(clamp(light[i], 0, 1)) * top, rounded with halves up; 0 for NaN.
void squareRootIndexes(const float* light, std::size_t count, float top, std::uint16_t* indexes);

/// indexes[i] = clamp(values[i], 0, 1) * top, rounded with halves up; 0 for NaN.
void linearIndexes(const float* values, std::size_t count, float top, std::uint16_t* indexes);

} // namespace kestrine::kernels
