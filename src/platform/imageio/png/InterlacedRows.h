// InterlacedRows: the rows of an interlaced PNG file, decoded by libpng. Damage or missing data anywhere up
// to the last chunk is a failure.
//
// The first six passes hold the pixels of the even rows (0, 2, ...), the last one those of the odd rows. Of a
// small picture, one reader decodes the even rows into memory and then streams the odd ones. Of a large one,
// each pass has a reader of its own, so that nothing is held; since the early passes are short, all readers
// together inflate the pixels only twice.
#pragma once

#include "platform/coregraphics/PixelBuffer.h"
#include "platform/imageio/png/LibraryReader.h"

#include <array>

namespace kestrine::png {

class InterlacedRows final : public RowSource {
public:
    static constexpr std::uint64_t defaultMaxHeldBytes = std::uint64_t{1} << 27;

    /// `first` is the first reader; its header must have been read from `file`. A picture is large if it has
    /// more than `maxHeldBytes`.
    InterlacedRows(std::unique_ptr<LibraryReader> first, std::shared_ptr<const ByteReader> file,
                   std::uint64_t maxHeldBytes = defaultMaxHeldBytes);

    Result<void> readRow(std::span<std::uint8_t> row) override;

private:
    using Reader = std::unique_ptr<LibraryReader>;

    bool isEmpty(int pass) const;
    Result<void> readEvenRows();
    Result<void> readFromAllPasses(std::span<std::uint8_t> row);
    Result<void> readFromHeldRows(std::span<std::uint8_t> row);
    /// Opens the reader of `pass` and skips the passes before it.
    Result<void> start(int pass);
    /// Reads the next row of `pass` and puts its pixels to their places in `row`.
    Result<void> readPart(LibraryReader& reader, int pass, std::span<std::uint8_t> row);

    const std::shared_ptr<const ByteReader> file_;
    const bool isHeld_;
    Reader spare_; ///< for the pass that starts first
    std::array<Reader, PNG_INTERLACE_ADAM7_PASSES> readers_;
    Bytes part_;           ///< a row of a pass
    PixelBuffer evenRows_; ///< of a small picture
    std::uint32_t y_ = 0;
};

} // namespace kestrine::png
