#include "platform/foundation/NSIndexSet.h"

#include <algorithm>

namespace kestrine {
namespace {

/// The part of `range` below NSNotFound, whose end does not overflow.
NSRange clipped(NSRange range) {
    const std::size_t location = std::min(range.location, NSNotFound);
    return {location, std::min(range.length, NSNotFound - location)};
}

} // namespace

NSIndexSet::NSIndexSet(std::vector<NSRange> ranges) {
    std::ranges::transform(ranges, ranges.begin(), clipped);
    std::erase_if(ranges, [](const NSRange& range) { return range.length == 0; });
    std::ranges::sort(ranges, {}, &NSRange::location);
    for (const NSRange& range : ranges) {
        if (ranges_.empty() || ranges_.back().end() < range.location) {
            ranges_.push_back(range);
        } else {
            NSRange& last = ranges_.back();
            last.length = std::max(last.end(), range.end()) - last.location;
        }
    }
}

std::size_t NSIndexSet::count() const {
    std::size_t sum = 0;
    for (const NSRange& range : ranges_) {
        sum += range.length;
    }
    return sum;
}

std::vector<NSRange>::const_iterator NSIndexSet::rangeEndingAfter(std::size_t index) const {
    return std::ranges::upper_bound(ranges_, index, {}, &NSRange::end);
}

bool NSIndexSet::containsIndex(std::size_t index) const {
    const auto range = rangeEndingAfter(index);
    return range != ranges_.end() && range->location <= index;
}

std::size_t NSIndexSet::indexGreaterThanIndex(std::size_t index) const {
    if (index >= NSNotFound) {
        return NSNotFound;
    }
    const auto range = rangeEndingAfter(index + 1);
    return range == ranges_.end() ? NSNotFound : std::max(range->location, index + 1);
}

} // namespace kestrine
