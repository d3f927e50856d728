// Dates as text in the local time of the system's zone, as TZ or /etc/localtime say.
#pragma once

#include "platform/foundation/text/NSString.h"

#include <chrono>

namespace kestrine {

/// The point in time that a text of the form YYYY-MM-DD HH:MM:SS or YYYY:MM:DD HH:MM:SS means; nothing for
/// any other text and for a date that no calendar has. Of a time that the clocks show twice the first is
/// meant; one that they skip is moved on by as much as they skip.
std::optional<std::chrono::sys_seconds> dateFromText(const NSString& text);

/// ISO 8601 in local time with its offset from UTC: 2008-01-02T10:11:12+09:00. An offset of old times that is
/// no whole minute is cut to one, and the time fits the offset that is shown.
std::string isoText(std::chrono::sys_seconds date);

} // namespace kestrine
