// RowSource: a picture that comes row by row, top to bottom. Decoders and the stages behind them are
// RowSources.
#pragma once

#include "platform/coregraphics/RowFormat.h"
#include "platform/host/Result.h"

#include <memory>
#include <span>

namespace kestrine {

/// Used by one thread at a time, though not always by the thread that made it.
class RowSource {
public:
    virtual ~RowSource() = default;

    const RowFormat& format() const { return format_; }

    /// Writes the next row, exactly format().bytesPerRow() bytes, into `row`. Called at most
    /// format().height times; after a failure it is not called again.
    virtual Result<void> readRow(std::span<std::uint8_t> row) = 0;

    /// Whether threads of its own work on its rows already (see RowsAhead).
    virtual bool isReadAhead() const { return false; }

protected:
    explicit RowSource(const RowFormat& format) : format_(format) {}

private:
    const RowFormat format_;
};

using RowSourcePointer = std::unique_ptr<RowSource>;

} // namespace kestrine
