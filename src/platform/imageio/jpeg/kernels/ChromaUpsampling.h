// Expands rows of chroma samples to the width of the picture. Vectorised, chosen at run time; the samples
// equal those of libjpeg-turbo bit by bit.
//
// The "fancy" functions smooth: in each direction that is doubled, a pixel gets three parts of the nearest
// sample and one part of the next one. The rounding alternates between pixels. Outside a row the first or
// last sample is repeated. libjpeg-turbo smooths by default, unless the picture is reduced to an eighth:
// horizontally or in both directions if the row has at least 3 samples, vertically alone always. In all other
// cases it repeats samples and rows.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kestrine::kernels {

/// Two pixels for each of the `width` samples.
void upsampleH2V1Fancy(const std::uint8_t* row, std::size_t width, std::uint8_t* result);

/// One of the two rows of pixels made from `nearRow`, with two pixels for each sample. `farRow` is the row of
/// samples above for the upper row of pixels, and the row below for the lower one. At the upper and lower
/// edge of the picture it is nearRow itself; rows that only pad a block do not count.
void upsampleH2V2Fancy(const std::uint8_t* nearRow, const std::uint8_t* farRow, std::size_t width,
                       std::uint8_t* result);

/// The same with one pixel for each sample. `isUpper` selects the rounding of the upper or lower row.
void upsampleH1V2Fancy(const std::uint8_t* nearRow, const std::uint8_t* farRow, bool isUpper,
                       std::size_t width, std::uint8_t* result);

/// Repeats every sample `times` times.
void replicate(const std::uint8_t* row, std::size_t width, int times, std::uint8_t* result);

} // namespace kestrine::kernels
