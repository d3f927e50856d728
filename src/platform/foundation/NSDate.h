// NSDate: a point in time, in nanoseconds.
#pragma once

#include <compare>
#include <cstdint>

namespace kestrine {

struct NSDate {
    std::int64_t seconds = 0;     ///< since 1970-01-01 00:00:00 UTC
    std::int32_t nanoseconds = 0; ///< 0 to 999999999, added to the seconds

    auto operator<=>(const NSDate&) const = default;

    /// `compare:`: -1 if this date is earlier than `other`, 1 if it is later, otherwise 0.
    int compare(const NSDate& other) const { return (*this > other) - (*this < other); }
};

} // namespace kestrine
