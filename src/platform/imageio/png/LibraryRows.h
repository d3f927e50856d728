// LibraryRows: the rows of a PNG file that is not interlaced, decoded by libpng. After damage or the end of
// the file, the rows are clear, or black in a picture without alpha. Without any sound row there is a
// failure.
#pragma once

#include "platform/coregraphics/RowSource.h"
#include "platform/imageio/DamageRecord.h"
#include "platform/imageio/png/LibraryReader.h"

namespace kestrine::png {

class LibraryRows final : public RowSource {
public:
    /// The header of `reader` must have been read.
    LibraryRows(std::unique_ptr<LibraryReader> reader, std::shared_ptr<DamageRecord> damage);

    Result<void> readRow(std::span<std::uint8_t> row) override;

private:
    const std::unique_ptr<LibraryReader> reader_;
    const std::shared_ptr<DamageRecord> damage_;
    std::uint32_t y_ = 0; ///< of the next row
    bool isDamaged_ = false;
};

/// Reads the header of a PNG file and starts decoding.
Result<RowSourcePointer> openLibraryRows(std::shared_ptr<const ByteReader> reader,
                                         std::shared_ptr<DamageRecord> damage);

} // namespace kestrine::png
