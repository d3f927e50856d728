// Elements: the pictures and masks in an ICNS file.
#pragma once

#include "platform/host/FourCC.h"
#include "platform/host/files/ByteReader.h"

#include <optional>
#include <vector>

namespace kestrine::icns {

/// How the pixels of an element are stored. Among pictures, kinds with more colours come later.
enum class Kind : std::uint8_t {
    bits,         ///< 8 per byte, 1 is black
    bitsWithMask, ///< the same, followed by a mask in which 1 is opaque
    indices4,     ///< of the 16 system colours
    indices8,     ///< of the 256 system colours
    colors,       ///< planes of red, green and blue with run-length codes, or plain pixels
    colorsAfter4, ///< the same, after four unused bytes
    file,         ///< PNG or JPEG 2000; in older files also `colors`, or `ARGB` and four planes
    mask,         ///< a byte of alpha per pixel
};

struct ElementType {
    FourCC name;
    std::uint32_t width, height;
    Kind kind;
};

struct Element {
    const ElementType* type; ///< in a constant table
    std::uint64_t offset;    ///< of the content in the file
    std::uint64_t length;
};

/// The elements of known types, in the order of the file. An element that does not lie in the file is kept.
std::vector<Element> readElements(const ByteReader& reader);

} // namespace kestrine::icns
