// Dates as strings in local time. The time zone comes from TZ or /etc/localtime.
#pragma once

#include "platform/foundation/text/NSString.h"

#include <chrono>

namespace kestrine {

/// The point in time for a string of the form YYYY-MM-DD HH:MM:SS or YYYY:MM:DD HH:MM:SS. Empty for any other
/// string and for a date that does not exist. When the clocks are set back, an ambiguous time is the first of
/// the two. When they are set forward, a skipped time is moved forward by the skipped amount.
std::optional<std::chrono::sys_seconds> dateFromText(const NSString& text);

/// The date in ISO 8601 form with local time and UTC offset: 2008-01-02T10:11:12+09:00. If the offset of an
/// old date is not a whole number of minutes, it is rounded down, and the time matches the printed offset.
std::string isoText(std::chrono::sys_seconds date);

} // namespace kestrine
