// FilteredRows: the vertical half of resampling with all that comes before it: rows of samples in, rows of
// floats out, several at a time.
#pragma once

#include "platform/coregraphics/ColumnFilter.h"
#include "platform/coregraphics/RowSource.h"
#include "platform/coregraphics/SampleConversion.h"

namespace kestrine {

class FilteredRows {
public:
    /// On a thread of its own where that pays: where one is to be had (see RowsAhead) and `input` itself is
    /// not read ahead. `conversion` must outlive the result; only its toFloats() is used.
    static std::unique_ptr<FilteredRows> create(RowSourcePointer input, const SampleConversion& conversion,
                                                FilterWeights weights);
    virtual ~FilteredRows() = default;

    /// The next rows: kernels::mostRowsWeighed, fewer only at the bottom. Each has the samples of an input
    /// row and kernels::rowPadding floats behind them. Valid until the next call; not to be called behind the
    /// bottom or after a failure.
    virtual Result<std::span<const FloatRow>> next() = 0;
};

} // namespace kestrine
