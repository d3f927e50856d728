// InterlacedRows: the rows of an interlaced PNG file, decoded by libpng. Each of the seven passes has a
// reader of its own, so that the picture is never held in memory. The readers together inflate the pixels
// twice, since the early passes are short. Damage or missing data anywhere up to the last chunk is a failure.
#pragma once

#include "platform/coregraphics/RowSource.h"
#include "platform/imageio/png/LibraryReader.h"

#include <array>

namespace kestrine::png {

class InterlacedRows final : public RowSource {
public:
    /// `first` is one of the readers; its header must have been read from `file`.
    InterlacedRows(std::unique_ptr<LibraryReader> first, std::shared_ptr<const ByteReader> file);

    Result<void> readRow(std::span<std::uint8_t> row) override;

private:
    bool isEmpty(int pass) const;
    /// The number of rows in all passes before `pass`.
    std::uint64_t rowsBefore(int pass) const;
    /// Opens the reader of `pass` and skips the passes before it.
    Result<void> start(int pass);
    /// Reads the next row of `pass` and puts its pixels to their places in `row`.
    Result<void> readPart(int pass, std::span<std::uint8_t> row);

    const std::shared_ptr<const ByteReader> file_;
    std::unique_ptr<LibraryReader> spare_; ///< for the pass that starts first
    std::array<std::unique_ptr<LibraryReader>, PNG_INTERLACE_ADAM7_PASSES> readers_;
    Bytes part_; ///< a row of a pass
    std::uint32_t y_ = 0;
};

} // namespace kestrine::png
