// Plain loops with the results of StoredIndexes.h, as a reference for the vectorised functions.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kestrine::kernels::reference {

void squareRootIndexes(const float* light, std::size_t count, float top, std::uint16_t* indexes);
void linearIndexes(const float* values, std::size_t count, float top, std::uint16_t* indexes);

} // namespace kestrine::kernels::reference
