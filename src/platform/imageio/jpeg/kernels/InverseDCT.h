// Transforms the coefficients of JPEG blocks into samples, sixteen blocks at a time. Vectorised, chosen at
// run time. The samples equal bit by bit those of libjpeg-turbo's accurate integer transform as its x86
// vector code computes it, for all 16-bit coefficients and quantisers: sums and products that do not fit wrap
// or saturate in the same places.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kestrine::kernels {

/// Blocks of a group.
inline constexpr int dctLanes = 16;

/// Coefficients per block. A group has this many times dctLanes values.
inline constexpr int dctCoefficients = 64;

/// Turns a group of blocks into samples. The coefficient at position z (row-major, row 0 the lowest vertical
/// frequency) of lane l is group[z * dctLanes + l], not yet multiplied by quantisation[z] (64 values,
/// row-major). The group needs no alignment, but an address that is a multiple of 64 bytes is fastest.
/// `size` is the side of the square that each block becomes: 8, 4, 2 or 1.
/// The square of lane l begins at output + l * laneStride, and its rows are rowStride bytes apart. Nothing
/// outside the squares is written. Adjacent squares (laneStride == size) are fastest.
/// `lastNonZero` is the largest zigzag index at which any lane has a coefficient other than 0; it is 0 when
/// all lanes have only DC coefficients. A larger value gives the same samples, but takes longer.
void inverseDCT(int size, const std::int16_t* group, const std::uint16_t* quantisation, int lastNonZero,
                std::uint8_t* output, std::ptrdiff_t laneStride, std::ptrdiff_t rowStride);

} // namespace kestrine::kernels
