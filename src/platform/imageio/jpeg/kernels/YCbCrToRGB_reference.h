// Plain loops with the results of YCbCrToRGB.h, as a reference for the vectorised functions.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kestrine::kernels::reference {

void convertYCbCrToRGB(const std::uint8_t* y, const std::uint8_t* cb, const std::uint8_t* cr,
                       std::size_t width, std::uint8_t* rgb);

} // namespace kestrine::kernels::reference
