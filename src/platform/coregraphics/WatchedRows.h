// WatchedRows: lets a caller follow the work on a picture, and end it.
#pragma once

#include "platform/coregraphics/RowSource.h"

#include <functional>

namespace kestrine {

/// Follows the rows that this thread makes into files during its lifetime. If several exist, the newest one
/// counts.
class RowWatch {
public:
    /// Gets the share of the work that is done, 0 to 1; false ends the work.
    using Report = std::function<bool(double share)>;

    explicit RowWatch(Report report);
    ~RowWatch();
    RowWatch(const RowWatch&) = delete;
    RowWatch& operator=(const RowWatch&) = delete;

    /// false if the work is to end.
    bool report(double share) const { return report_(share); }
    /// Whether a report has ended the rows.
    bool wasEnded() const { return wasEnded_; }

private:
    friend class WatchedRows;

    const Report report_;
    RowWatch* const outer_;
    bool wasEnded_ = false;
};

/// Reports to the watch of this thread after each hundredth of the rows. The watch must outlive the rows.
/// `input` itself if there is no watch.
RowSourcePointer rowsWatched(RowSourcePointer input);

} // namespace kestrine
