// Converts stored TIFF samples to samples of 8 or 16 bits.
#pragma once

#include "platform/host/Bytes.h"

#include <vector>

namespace kestrine::tiff {

/// Fills `samples` from packed integers of `bits` (1 to 16) bits each, most significant bit first; 16-bit
/// ones have the machine's byte order. Their range is stretched to that of a Sample, unless they are indices.
template <class Sample>
void unpackIntegers(ByteView packed, unsigned bits, bool areIndices, std::vector<Sample>& samples);

/// The same from floats from 0 to 1; values outside are clamped, and not-a-number becomes 0.
void unpackFloats(ByteView packed, std::vector<std::uint16_t>& samples);

} // namespace kestrine::tiff
