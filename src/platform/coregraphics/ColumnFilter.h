// ColumnFilter: the vertical half of resampling. It takes source rows from the top and gives filtered rows,
// and holds only the rows that it still needs.
#pragma once

#include "platform/coregraphics/FilterWeights.h"

#include <deque>
#include <memory>
#include <vector>

namespace kestrine {

using FloatRow = std::vector<float>;

class ColumnFilter {
public:
    /// `samples` is the number of floats per row. Result rows have `padding` additional floats, which are
    /// zero. A reduction adds each source row to the sums that use it; an enlargement keeps the source rows
    /// that the next result needs. In both cases memory does not depend on the height of the picture.
    static std::unique_ptr<ColumnFilter> create(FilterWeights weights, std::size_t samples,
                                                std::size_t padding);
    virtual ~ColumnFilter() = default;

    /// Whether the next result row needs another source row.
    virtual bool needsRow() const = 0;
    /// Where to write the next source row, `samples` floats. Call rowAdded() afterwards.
    virtual float* rowToFill() = 0;
    virtual void rowAdded() = 0;
    /// The next result row. Requires !needsRow().
    virtual FloatRow takeRow() = 0;
    /// Returns a row of takeRow() for reuse.
    virtual void giveBack(FloatRow row) = 0;
};

} // namespace kestrine
