// NSDate: a point in time, as exact as file systems keep it.
#pragma once

#include <compare>
#include <cstdint>

namespace kestrine {

struct NSDate {
    std::int64_t seconds = 0;     ///< since the start of 1970 UTC
    std::int32_t nanoseconds = 0; ///< 0 to 999999999, on top of them

    auto operator<=>(const NSDate&) const = default;

    /// `compare:`: -1 when this date is the earlier one, 1 when it is the later one, else 0.
    int compare(const NSDate& other) const { return (*this > other) - (*this < other); }
};

} // namespace kestrine
