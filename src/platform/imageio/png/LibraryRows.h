// LibraryRows: the pixels of any PNG file through libpng. Rows stream; only an interlaced picture is held
// whole. A picture that turns out damaged or cut short anywhere up to its last chunk is a failure.
#pragma once

#include "platform/coregraphics/PixelBuffer.h"
#include "platform/imageio/png/LibraryReader.h"

namespace kestrine::png {

class LibraryRows final : public RowSource {
public:
    /// Of a reader whose header has been read.
    explicit LibraryRows(std::unique_ptr<LibraryReader> reader);

    Result<void> readRow(std::span<std::uint8_t> row) override;

private:
    Result<void> readInterlacedRow(std::span<std::uint8_t> row);
    Result<void> readPasses();

    const std::unique_ptr<LibraryReader> reader_;
    std::uint32_t left_;
    PixelBuffer whole_; ///< of an interlaced picture
};

/// Reads the header of a PNG file, then its rows.
Result<RowSourcePointer> openLibraryRows(std::shared_ptr<const ByteReader> reader);

} // namespace kestrine::png
