// From luma and colour differences, as JPEG stores them, to pixels. Vectorised, chosen at run time; the
// samples are libjpeg-turbo's to the bit.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kestrine::kernels {

/// For each of `width` pixels, with U = Cb - 128 and V = Cr - 128:
///   R = Y + 1.40200 V,  G = Y - 0.34414 U - 0.71414 V,  B = Y + 1.77200 U,
/// the factors rounded to 16 fraction bits, what is added to Y rounded half up, the sum held within 0 and
/// 255. `rgb` takes 3 bytes a pixel and may not overlap the rows.
void convertYCbCrToRGB(const std::uint8_t* y, const std::uint8_t* cb, const std::uint8_t* cr,
                       std::size_t width, std::uint8_t* rgb);

} // namespace kestrine::kernels
