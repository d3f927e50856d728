// StoredRows: the rows of a PCX file without run-length codes.
#pragma once

#include "platform/imageio/pcx/Header.h"

namespace kestrine::pcx {

/// Reads from the first row on.
class StoredRows {
public:
    StoredRows(std::shared_ptr<const ByteReader> reader, bool isRunLength)
        : input_(std::move(reader), headerLength, bufferBytes), isRunLength_(isRunLength) {}

    /// Fills `row` with the planes of the next row.
    Result<void> read(std::span<std::uint8_t> row);

    /// The offset after the rows that were read.
    std::uint64_t offset() const { return input_.offset(); }

private:
    static constexpr std::size_t bufferBytes = std::size_t{64} << 10;

    ForwardReader input_;
    const bool isRunLength_;
    unsigned left_ = 0; ///< how often `value_` comes next; a run may continue in the next row
    std::uint8_t value_ = 0;
};

} // namespace kestrine::pcx
