// Header: the fields of a TGA file that define its picture: the first 18 bytes, the colour map and the
// extension area at the end.
#pragma once

#include "platform/coregraphics/RowFormat.h"
#include "platform/host/files/ByteReader.h"
#include "platform/imageio/tga/Pixels.h"

namespace kestrine::tga {

/// What extension areas and attribute bits say about alpha.
enum class Alpha : std::uint8_t { none, straight, premultiplied };

struct ColorMap {
    std::uint32_t first = 0; ///< the index of the first entry
    Bytes entries{};         ///< samples in the format of the picture
};

struct Header {
    RowFormat format{};
    Pixels pixels = Pixels::color24;
    Alpha alpha = Alpha::none;
    bool isRunLength = false;
    bool isTopDown = false;     ///< otherwise the lowest row is stored first
    bool isRightToLeft = false; ///< the rightmost pixel of a row is stored first
    ColorMap colors{};          ///< for indices
    std::uint64_t pixelOffset = 0;

    std::size_t bytesPerStoredRow() const {
        return pixels == Pixels::bits ? (std::size_t{format.width} + 7) / 8 : format.width * bytesOf(pixels);
    }
};

/// TGA files have no signature. Whether all 18 bytes of the header at the start of `head` are consistent.
bool isTGA(ByteView head);

/// Reads the header of a file for which isTGA() holds.
Result<Header> readHeader(const ByteReader& reader);

} // namespace kestrine::tga
