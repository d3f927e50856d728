// Undoes what TIFF calls horizontal differencing: each sample is stored as the difference to the same sample
// of the pixel before it. Vectorised, chosen at run time; every target gives the bytes of the plain loop in
// PixelDifferences_reference.h.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kestrine::kernels {

/// Replaces the differences in a row of `count` bytes by the samples. A sample has `bytesPerSample` bytes, 1
/// or 2, in the machine's byte order; sums wrap around. Each pixel has `samplesPerPixel` samples, at least 1.
/// `count` is a multiple of the bytes of a pixel.
void undoPixelDifferences(std::uint8_t* row, std::size_t count, std::size_t bytesPerSample,
                          std::size_t samplesPerPixel);

} // namespace kestrine::kernels
