// The one table of what went wrong: the system's reasons as the status numbers of the platform.
#pragma once

#include "platform/finder/Finder.h"
#include "platform/host/Result.h"

namespace kestrine {

/// The platform's number for a reason; it is never 0.
std::int32_t finderErrorNumber(Reason reason);

/// The failure as scripts and Apple Events report it.
FinderError finderError(const Failure& failure);

} // namespace kestrine
