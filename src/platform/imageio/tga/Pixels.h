// Pixels: the kinds of stored pixels in TGA files.
#pragma once

#include "platform/host/Bytes.h"

#include <cstddef>

namespace kestrine::tga {

/// What a stored pixel or an entry of the colour map means. Numbers have the lowest byte first.
enum class Pixels : std::uint8_t {
    bits,      ///< 8 per byte, the leftmost pixel in the highest bit, 1 is white
    gray,      ///< one byte
    grayAlpha, ///< two bytes
    color16,   ///< from the highest bit: alpha, 5 bits each of red, green and blue
    color24,   ///< blue, green, red
    color32,   ///< blue, green, red, alpha
    index8,    ///< of an entry of the colour map
    index16,
};

/// Bytes of a stored pixel, or of 8 pixels for bits.
std::size_t bytesOf(Pixels kind);

/// Converts `pixels` stored pixels, which must not be indices, to samples of 8 bits. Alpha is left out unless
/// it is wanted; where it is wanted, the pixels must have it.
void convertPixels(Pixels kind, bool withAlpha, ByteView stored, std::size_t pixels, std::uint8_t* samples);

} // namespace kestrine::tga
