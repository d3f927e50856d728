// RowSource: a picture that is delivered row by row, from top to bottom. Decoders and the stages after them
// are RowSources.
#pragma once

#include "platform/coregraphics/RowFormat.h"
#include "platform/host/Result.h"

#include <memory>
#include <span>

namespace kestrine {

/// Used by one thread at a time, which may differ from the thread that made it.
class RowSource {
public:
    virtual ~RowSource() = default;

    const RowFormat& format() const { return format_; }

    /// Writes the next row into `row`, which has format().bytesPerRow() bytes. Must be called at most
    /// format().height times, and not after a failure.
    virtual Result<void> readRow(std::span<std::uint8_t> row) = 0;

    /// Whether a crew already prepares its rows (see RowsAhead.h).
    virtual bool isReadAhead() const { return false; }

protected:
    explicit RowSource(const RowFormat& format) : format_(format) {}

private:
    const RowFormat format_;
};

using RowSourcePointer = std::unique_ptr<RowSource>;

} // namespace kestrine
