// LibraryReader: one pass of libpng over a file, first the header, then the rows as they are delivered.
#pragma once

#include "platform/coregraphics/RowFormat.h"
#include "platform/imageio/ForwardReader.h"
#include "platform/imageio/png/Library.h"

#include <array>

namespace kestrine::png {

class LibraryReader {
public:
    explicit LibraryReader(std::shared_ptr<const ByteReader> reader);
    ~LibraryReader();
    LibraryReader(const LibraryReader&) = delete;
    LibraryReader& operator=(const LibraryReader&) = delete;

    /// Reads up to the pixels and chooses how they are delivered: indices as colours, transparent colours as
    /// alpha, grey below 8 bits as 8 bits, 16 bits in the machine's order.
    Result<void> readHeader();

    // All of these are valid once the header has been read.

    /// As delivered.
    RowFormat format() const;
    /// Whether the stored colours are indices into a table.
    bool isIndexed() const { return storedColorType_ == PNG_COLOR_TYPE_PALETTE; }
    /// Whether the rows come in seven passes, each over all of them.
    bool isInterlaced() const;
    /// Uncompressed size of the stored rows, each with its filter byte.
    std::uint64_t storedBytes() const;
    /// How the pixels are filtered: bytes a pixel as it is stored, at least 1.
    std::size_t storedBytesPerPixel() const { return (storedBitsPerPixel_ + 7) / 8; }
    /// Whether the pixels are delivered as they are stored, but for the byte order of 16-bit samples.
    bool deliversAsStored() const;
    /// Whether they are whole bytes that are indices.
    bool isIndexedByBytes() const { return isIndexed() && storedBitsPerPixel_ == 8; }
    /// How opaque the colour of each index is.
    const std::array<std::uint8_t, 256>& alphaOfIndices() const { return alphaOfIndices_; }
    /// Whether the file says in a damaged chunk, which was skipped, what is transparent.
    bool lacksTransparency() const { return message_.lacksTransparency; }
    /// Where in the file the first chunk of pixels begins.
    std::uint64_t offsetOfPixels() const { return offsetOfPixels_; }
    /// For libpng's questions about chunks. Owned by the reader.
    png_structp png() const { return png_; }
    png_infop info() const { return info_; }

    /// The next row. In a later pass, `row` must hold what the earlier ones have left there.
    Result<void> readRow(std::span<std::uint8_t> row);
    /// Reads all that follows the last row, so that damage up to the end shows.
    Result<void> finish();

private:
    template <class Step>
    Result<void> run(const Step& step);
    /// To be called before libpng turns indices into colours.
    void readAlphaOfIndices();

    Message message_;
    ForwardReader input_;
    png_structp png_ = nullptr;
    png_infop info_ = nullptr;
    std::uint8_t storedColorType_ = 0;
    std::uint64_t storedRowBytes_ = 0;
    std::size_t storedBitsPerPixel_ = 0;
    std::uint64_t offsetOfPixels_ = 0;
    std::array<std::uint8_t, 256> alphaOfIndices_;
};

} // namespace kestrine::png
