// NSIndexSet: an immutable set of indexes, stored as ranges.
#pragma once

#include "platform/foundation/text/NSString.h"

#include <vector>

namespace kestrine {

class NSIndexSet final : public NSObject {
public:
    /// The ranges may be in any order. They may overlap, touch or be empty. Indexes from NSNotFound on are
    /// left out.
    explicit NSIndexSet(std::vector<NSRange> ranges = {});

    /// Sorted and not empty. They do not overlap or touch.
    const std::vector<NSRange>& ranges() const { return ranges_; }
    /// Number of indexes.
    std::size_t count() const;
    bool containsIndex(std::size_t index) const;
    /// `firstIndex`: NSNotFound if the set is empty.
    std::size_t firstIndex() const { return ranges_.empty() ? NSNotFound : ranges_.front().location; }
    /// `indexGreaterThanIndex:`: the next index of the set; NSNotFound if there is none.
    std::size_t indexGreaterThanIndex(std::size_t index) const;

private:
    /// The first range whose end is greater than `index`.
    std::vector<NSRange>::const_iterator rangeEndingAfter(std::size_t index) const;

    std::vector<NSRange> ranges_;
};

} // namespace kestrine
