// PixelBuffer: a whole picture in memory.
#pragma once

#include "platform/coregraphics/RowSource.h"
#include "platform/host/Bytes.h"

namespace kestrine {

struct PixelBuffer {
    RowFormat format;
    Bytes bytes; ///< format.height rows of format.bytesPerRow() bytes, without padding

    PixelBuffer() = default;
    explicit PixelBuffer(const RowFormat& f) : format(f), bytes(f.bytesPerRow() * f.height) {}

    std::span<std::uint8_t> row(std::size_t y) {
        return std::span(bytes).subspan(y * format.bytesPerRow(), format.bytesPerRow());
    }
    std::span<const std::uint8_t> row(std::size_t y) const {
        return std::span(bytes).subspan(y * format.bytesPerRow(), format.bytesPerRow());
    }
};

/// Reads all rows. Fails with reason "tooLarge" for pictures over maximumBufferedBytes.
Result<PixelBuffer> readAllRows(RowSource& rows);

/// The rows of `pixels`, which are shared and not changed.
RowSourcePointer rowsOfPixels(std::shared_ptr<const PixelBuffer> pixels);

} // namespace kestrine
