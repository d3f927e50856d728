// RowFilter: filters the rows of a PNG picture, each with the filter that gives the smallest differences.
#pragma once

#include "platform/coregraphics/RowFormat.h"
#include "platform/host/Bytes.h"

namespace kestrine::png {

class RowFilter {
public:
    explicit RowFilter(const RowFormat& format);

    /// Size of a filtered row: the number of the filter, then the row.
    std::size_t filteredBytes() const { return rowBytes_ + 1; }

    /// Writes filteredBytes() bytes to `filtered`. Rows must come from top to bottom.
    void filter(ByteView row, std::uint8_t* filtered);

private:
    const std::size_t bytesPerPixel_, rowBytes_;
    const bool hasWords_;
    Bytes row_, above_; ///< in stored byte order, with margins
};

} // namespace kestrine::png
