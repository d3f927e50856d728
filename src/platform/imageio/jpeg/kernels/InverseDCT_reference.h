// The plain truth of InverseDCT.h, as oracle for its vectorised form and in place of it where numbers are so
// large that the way of computing shows.
#pragma once

#include "platform/imageio/jpeg/kernels/InverseDCT.h"

namespace kestrine::kernels::reference {

/// As kernels::inverseDCT; `lastNonZero` makes no difference.
void inverseDCT(int size, const std::int16_t* group, const std::uint16_t* quantisation, int lastNonZero,
                std::uint8_t* output, std::ptrdiff_t laneStride, std::ptrdiff_t rowStride);

} // namespace kestrine::kernels::reference
