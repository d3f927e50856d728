// Header: the fields of a PCX file that define its picture, and its colours.
#pragma once

#include "platform/coregraphics/RowFormat.h"
#include "platform/imageio/ForwardReader.h"

namespace kestrine::pcx {

inline constexpr std::size_t headerLength = 128;

enum class Pixels : std::uint8_t { bits, gray, indexed, colors };

struct Header {
    RowFormat format{};
    Pixels pixels = Pixels::colors;
    unsigned bits = 8;        ///< per sample or index, in each plane
    std::uint32_t planes = 3; ///< of each row, one after the other
    std::uint32_t planeBytes = 0;
    bool isRunLength = true;
    Bytes palette{}; ///< red, green, blue of every possible index

    std::size_t bytesPerStoredRow() const { return std::size_t{planes} * planeBytes; }
};

/// Whether the first 12 bytes of `head` are those of a PCX file.
bool isPCX(ByteView head);

/// Reads the header and the colours.
Result<Header> readHeader(const std::shared_ptr<const ByteReader>& reader);

} // namespace kestrine::pcx
