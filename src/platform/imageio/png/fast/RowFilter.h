// RowFilter: gives each row of a PNG picture the filter that leaves the least of it.
#pragma once

#include "platform/coregraphics/RowFormat.h"
#include "platform/host/Bytes.h"

namespace kestrine::png {

class RowFilter {
public:
    explicit RowFilter(const RowFormat& format);

    /// The filter's number and what the filter leaves of the row.
    std::size_t filteredBytes() const { return rowBytes_ + 1; }

    /// Writes filteredBytes() to `filtered`. Rows come from top to bottom.
    void filter(ByteView row, std::uint8_t* filtered);

private:
    const std::size_t bytesPerPixel_, rowBytes_;
    const bool hasWords_;
    Bytes row_, above_; ///< as stored, between margins
};

} // namespace kestrine::png
