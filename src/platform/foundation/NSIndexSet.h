// NSIndexSet: an immutable set of indexes, kept as ranges so that its size does not matter.
#pragma once

#include "platform/foundation/text/NSString.h"

#include <vector>

namespace kestrine {

class NSIndexSet final : public NSObject {
public:
    /// The ranges may come in any order, overlap, touch or be empty; what reaches NSNotFound or beyond is
    /// cut.
    explicit NSIndexSet(std::vector<NSRange> ranges = {});

    /// Sorted; no two overlap or touch, none is empty.
    const std::vector<NSRange>& ranges() const { return ranges_; }
    /// Number of indexes.
    std::size_t count() const;
    bool containsIndex(std::size_t index) const;
    /// NSNotFound in an empty set.
    std::size_t firstIndex() const { return ranges_.empty() ? NSNotFound : ranges_.front().location; }
    /// `indexGreaterThanIndex:`: the next index of the set; NSNotFound when there is none.
    std::size_t indexGreaterThanIndex(std::size_t index) const;

private:
    /// The first range that ends behind `index`.
    std::vector<NSRange>::const_iterator rangeEndingAfter(std::size_t index) const;

    std::vector<NSRange> ranges_;
};

} // namespace kestrine
