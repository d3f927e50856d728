// FilteredRows: converts rows of samples to floats and filters them vertically; delivers several rows at a
// time.
#pragma once

#include "platform/coregraphics/ColumnFilter.h"
#include "platform/coregraphics/RowSource.h"
#include "platform/coregraphics/SampleConversion.h"

namespace kestrine {

class FilteredRows {
public:
    /// The current crew filters ahead, if there is one for `input` (crewFor()). `conversion` must outlive the
    /// result; only its toFloats() is used.
    static std::unique_ptr<FilteredRows> create(RowSourcePointer input, const SampleConversion& conversion,
                                                FilterWeights weights);
    virtual ~FilteredRows() = default;

    /// The next kernels::maxRowsWeighed rows, fewer only at the bottom. Each row has the samples of an input
    /// row and kernels::rowPadding more floats. Valid until the next call. Must not be called after the last
    /// row or after a failure.
    virtual Result<std::span<const FloatRow>> next() = 0;
};

} // namespace kestrine
