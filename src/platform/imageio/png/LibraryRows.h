// LibraryRows: the rows of any PNG file, decoded by libpng. Only interlaced pictures are held in memory.
// Damage or missing data anywhere up to the last chunk is a failure.
#pragma once

#include "platform/coregraphics/PixelBuffer.h"
#include "platform/imageio/png/LibraryReader.h"

namespace kestrine::png {

class LibraryRows final : public RowSource {
public:
    /// The header of `reader` must have been read.
    explicit LibraryRows(std::unique_ptr<LibraryReader> reader);

    Result<void> readRow(std::span<std::uint8_t> row) override;

private:
    Result<void> readInterlacedRow(std::span<std::uint8_t> row);
    Result<void> readPasses();

    const std::unique_ptr<LibraryReader> reader_;
    std::uint32_t left_; ///< rows
    PixelBuffer whole_;  ///< only for interlaced pictures
};

/// Reads the header of a PNG file and starts decoding.
Result<RowSourcePointer> openLibraryRows(std::shared_ptr<const ByteReader> reader);

} // namespace kestrine::png
