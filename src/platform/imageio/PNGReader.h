// PNGReader: one pass of libpng over a file, first the header, then the rows as they are delivered.
#pragma once

#include "platform/coregraphics/RowFormat.h"
#include "platform/host/ByteReader.h"
#include "platform/imageio/PNGLibrary.h"

namespace kestrine {

/// What libpng reads from: the input in pieces of 64 KiB.
class PNGInput {
public:
    explicit PNGInput(std::shared_ptr<const ByteReader> reader) : reader_(std::move(reader)) {}

    /// Fills `into`, or tells that the input is too short.
    bool read(std::uint8_t* into, std::size_t count);
    /// Whether more was wanted than there is.
    bool endedEarly() const { return endedEarly_; }

private:
    bool refill();

    const std::shared_ptr<const ByteReader> reader_;
    std::uint64_t position_ = 0; ///< of the piece's end in the input
    Bytes piece_ = Bytes(1 << 16);
    std::size_t begin_ = 0, end_ = 0; ///< what is left of the piece
    bool endedEarly_ = false;
};

class PNGReader {
public:
    explicit PNGReader(std::shared_ptr<const ByteReader> reader);
    ~PNGReader();
    PNGReader(const PNGReader&) = delete;
    PNGReader& operator=(const PNGReader&) = delete;

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

    PNGMessage message_;
    PNGInput input_;
    png_structp png_ = nullptr;
    png_infop info_ = nullptr;
    std::uint8_t storedColorType_ = 0;
    std::uint64_t storedRowBytes_ = 0;
};

} // namespace kestrine
