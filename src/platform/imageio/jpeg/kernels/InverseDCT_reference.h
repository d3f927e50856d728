// Plain loops with the results of InverseDCT.h: a reference for the vectorised function, which also calls
// them for coefficients so large that its shortcuts would give other results.
#pragma once

#include "platform/imageio/jpeg/kernels/InverseDCT.h"

namespace kestrine::kernels::reference {

/// Does the same as kernels::inverseDCT; `lastNonZero` is ignored.
void inverseDCT(int size, const std::int16_t* group, const std::uint16_t* quantisation, int lastNonZero,
                std::uint8_t* output, std::ptrdiff_t laneStride, std::ptrdiff_t rowStride);

} // namespace kestrine::kernels::reference
