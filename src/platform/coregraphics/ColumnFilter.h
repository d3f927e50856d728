// ColumnFilter: the vertical half of resampling. Source rows go in from the top, filtered rows come out, and
// no more is held than the rows that are still under way.
#pragma once

#include "platform/coregraphics/FilterWeights.h"

#include <deque>
#include <memory>
#include <vector>

namespace kestrine {

using FloatRow = std::vector<float>;

class ColumnFilter {
public:
    /// `samples` floats a row; rows carry `padding` further floats, which are zero.
    /// Reductions add each source row to the few sums it belongs to; enlargements keep the few source rows
    /// that the next result needs. Either way memory does not grow with the picture's height.
    static std::unique_ptr<ColumnFilter> create(FilterWeights weights, std::size_t samples,
                                                std::size_t padding);
    virtual ~ColumnFilter() = default;

    /// Whether the next result row needs another source row first.
    virtual bool needsRow() const = 0;
    /// Where to write the next source row (`samples` floats); then call rowAdded().
    virtual float* rowToFill() = 0;
    virtual void rowAdded() = 0;
    /// The next result row. Only when !needsRow().
    virtual FloatRow takeRow() = 0;
    /// Takes back what takeRow() gave, to be filled again.
    virtual void giveBack(FloatRow row) = 0;
};

} // namespace kestrine
