// Converts stored TIFF samples to samples of 8 or 16 bits.
#pragma once

#include "platform/host/Bytes.h"

#include <vector>

namespace kestrine::tiff {

/// Fills `samples` from packed integers of `bits` (1 to 16, or 32) bits each, most significant bit first;
/// those of 16 and 32 bits have the machine's byte order. Their range is stretched to that of a Sample,
/// unless they are indices.
template <class Sample>
void unpackIntegers(ByteView packed, unsigned bits, bool areIndices, std::vector<Sample>& samples);

/// Makes the lowest number of signed samples 0, as for unsigned ones.
template <class Sample>
void shiftSigned(std::vector<Sample>& samples);

/// Fills `samples` from floating-point numbers from 0 to 1, of 16, 32 or 64 `bits`; values outside are
/// clamped, and not-a-number becomes 0.
void unpackFloats(ByteView packed, unsigned bits, std::vector<std::uint16_t>& samples);

} // namespace kestrine::tiff
