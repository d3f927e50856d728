// The plain loop with the results of PixelDifferences.h, as a reference for the vectorised function.
#pragma once

#include "platform/imageio/tiff/kernels/PixelDifferences.h"

namespace kestrine::kernels::reference {

void undoPixelDifferences(std::uint8_t* row, std::size_t count, std::size_t bytesPerSample,
                          std::size_t samplesPerPixel);

} // namespace kestrine::kernels::reference
