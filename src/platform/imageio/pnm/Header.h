// Header: what stands before the samples of the portable bitmaps, greymaps, pixmaps (P1 to P6) and
// arbitrary maps (P7).
#pragma once

#include "platform/coregraphics/RowFormat.h"
#include "platform/host/Bytes.h"
#include "platform/imageio/ForwardReader.h"

namespace kestrine::pnm {

enum class Samples : std::uint8_t {
    textBits, ///< digits 0 (white) and 1
    text,     ///< decimal numbers
    bits,     ///< 8 a byte, each row in whole bytes, 0 is white
    bytes,    ///< one or, with the largest above 255, two a sample, high byte first
};

struct Header {
    Samples samples;
    RowFormat format;      ///< 8 bits where the largest sample fits them
    std::uint32_t largest; ///< the sample that means full intensity, 1 to 65535
};

/// Whether a file that begins with `head` is one of these.
bool isPNM(ByteView head);

/// Reads from the beginning of `input` up to where the samples begin. The sides are not checked.
Result<Header> readHeader(ForwardReader& input);

/// A number behind white space and comments, together with the one character that ends it.
Result<std::uint32_t> readNumber(ForwardReader& input);

/// The next character that is neither white space nor in a comment; -1 at the end.
int nextCharacter(ForwardReader& input);

} // namespace kestrine::pnm
