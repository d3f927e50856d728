// Converts luma and chroma, as JPEG stores them, to RGB. Vectorised, chosen at run time; the samples equal
// those of libjpeg-turbo bit by bit.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kestrine::kernels {

/// For each of `width` pixels, with U = Cb - 128 and V = Cr - 128:
///   R = Y + 1.40200 V,  G = Y - 0.34414 U - 0.71414 V,  B = Y + 1.77200 U,
/// with factors rounded to 16 fraction bits. The sum that is added to Y is rounded with halves up, and the
/// result is clamped to 0..255. `rgb` receives 3 bytes per pixel and must not overlap the rows.
void convertYCbCrToRGB(const std::uint8_t* y, const std::uint8_t* cb, const std::uint8_t* cr,
                       std::size_t width, std::uint8_t* rgb);

} // namespace kestrine::kernels
