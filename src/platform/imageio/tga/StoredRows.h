// StoredRows: the rows of a TGA file as they are stored, without run-length codes. The picture is not held in
// memory: if rows are wanted in another order than the codes have, one pass over the codes notes where each
// row begins.
#pragma once

#include "platform/imageio/tga/Header.h"

#include <memory>
#include <span>

namespace kestrine::tga {

class StoredRows {
public:
    virtual ~StoredRows() = default;

    /// Fills `bytes` with the row `row` in stored order. Rows must be read in the order of the picture.
    virtual Result<void> read(std::uint32_t row, std::span<std::uint8_t> bytes) = 0;
};

/// Fails when codes end before the last row, if all of them had to be read.
Result<std::unique_ptr<StoredRows>> openStoredRows(std::shared_ptr<const ByteReader> reader,
                                                   const Header& header);

} // namespace kestrine::tga
