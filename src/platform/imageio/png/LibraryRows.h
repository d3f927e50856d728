// LibraryRows: the rows of a PNG file that is not interlaced, decoded by libpng. Damage or missing data
// anywhere up to the last chunk is a failure.
#pragma once

#include "platform/coregraphics/RowSource.h"
#include "platform/imageio/png/LibraryReader.h"

namespace kestrine::png {

class LibraryRows final : public RowSource {
public:
    /// The header of `reader` must have been read.
    explicit LibraryRows(std::unique_ptr<LibraryReader> reader);

    Result<void> readRow(std::span<std::uint8_t> row) override;

private:
    const std::unique_ptr<LibraryReader> reader_;
    std::uint32_t left_; ///< rows
};

/// Reads the header of a PNG file and starts decoding.
Result<RowSourcePointer> openLibraryRows(std::shared_ptr<const ByteReader> reader);

} // namespace kestrine::png
