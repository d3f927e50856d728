// Header: the header of portable bitmaps, greymaps and pixmaps (P1 to P6), of arbitrary maps (P7) and of
// floating-point maps (PF and Pf).
#pragma once

#include "platform/coregraphics/RowFormat.h"
#include "platform/host/Bytes.h"
#include "platform/imageio/ForwardReader.h"

namespace kestrine::pnm {

enum class Samples : std::uint8_t {
    textBits, ///< digits 0 (white) and 1
    text,     ///< decimal numbers
    bits,     ///< 8 per byte, each row in whole bytes, 0 is white
    bytes,    ///< one per sample, or two with the high byte first if `largest` is above 255
    floats,   ///< of 32 bits, 1 is full intensity; the last row comes first
};

struct Header {
    Samples samples;
    RowFormat format;      ///< 8 bits if `largest` is at most 255
    std::uint32_t largest; ///< the sample of full intensity, 1 to 65535; larger samples count as this one
    bool hasLowByteFirst = false; ///< of floats
};

/// Whether a file that begins with `head` is one of these formats.
bool isPNM(ByteView head);

/// Reads from the start of `input` up to the samples. The sides are not checked.
Result<Header> readHeader(ForwardReader& input);

/// Skips white space and comments, then reads a number and the one character after it.
Result<std::uint32_t> readNumber(ForwardReader& input);

/// The next character outside white space and comments; -1 at the end.
int nextCharacter(ForwardReader& input);

} // namespace kestrine::pnm
