// From the coefficients of JPEG blocks to samples, sixteen blocks at a time. Vectorised, chosen at run time.
// The samples are those of libjpeg-turbo's accurate integer transform as its x86 vector code computes it,
// to the bit and for every coefficient and quantiser of 16 bits: sums and products that do not fit wrap
// around or saturate where they do there. No file needs to be refused for its numbers.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kestrine::kernels {

/// Blocks of a group.
inline constexpr int dctLanes = 16;

/// Coefficients of a block, and so int16 values of a group, lanes apart.
inline constexpr int dctCoefficients = 64;

/// Turns a group of blocks into samples. The coefficient at position z (row-major, row 0 the lowest vertical
/// frequency) of lane l is group[z * dctLanes + l], not yet multiplied by quantisation[z] (64 values,
/// row-major); the group may lie anywhere, but is read fastest at a multiple of 64 bytes.
/// `size` is the side of the square each block becomes: 8, 4, 2 or 1.
/// The square of lane l begins at output + l * laneStride, and its rows are rowStride bytes apart;
/// nothing outside of the squares is written. Squares that touch (laneStride == size) are the fastest.
/// `lastNonZero` is the largest zigzag index at which any
/// lane holds something but 0 (0 when no lane has more than its DC coefficient); a larger value gives the
/// same samples, later.
void inverseDCT(int size, const std::int16_t* group, const std::uint16_t* quantisation, int lastNonZero,
                std::uint8_t* output, std::ptrdiff_t laneStride, std::ptrdiff_t rowStride);

} // namespace kestrine::kernels
