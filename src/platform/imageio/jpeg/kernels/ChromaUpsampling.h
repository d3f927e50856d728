// Rows of colour samples as wide as the picture. Vectorised, chosen at run time; the samples are
// libjpeg-turbo's to the bit. The smoothing kinds give a pixel three parts of the nearest sample and one of
// the next in every direction that is doubled, with the rounding that varies from pixel to pixel; beyond the
// first and the last sample of a row the same sample is thought to go on. libjpeg-turbo smooths (its "fancy
// upsampling", which is on by default) unless the picture is reduced to an eighth: across alone or in both
// directions where the row has at least 3 samples, down alone always. Every other whole-numbered proportion
// repeats samples; rows that repeat are the same row again.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kestrine::kernels {

/// Two pixels for each of the `width` samples.
void upsampleH2V1Fancy(const std::uint8_t* row, std::size_t width, std::uint8_t* result);

/// One of the two rows of pixels of `nearRow`, the one at the side of `farRow`: the row of samples above for
/// the upper one, below for the lower one, and at the edges of the picture (the last row that counts, not
/// what pads a block) nearRow itself. Two pixels for each sample.
void upsampleH2V2Fancy(const std::uint8_t* nearRow, const std::uint8_t* farRow, std::size_t width,
                       std::uint8_t* result);

/// As upsampleH2V2Fancy with one pixel for each sample. The rounding depends on which of the two rows it is.
void upsampleH1V2Fancy(const std::uint8_t* nearRow, const std::uint8_t* farRow, bool isUpper,
                       std::size_t width, std::uint8_t* result);

/// Every sample `times` times.
void replicate(const std::uint8_t* row, std::size_t width, int times, std::uint8_t* result);

} // namespace kestrine::kernels
