// The status numbers of the platform for the reasons of failures.
#pragma once

#include "platform/finder/Finder.h"
#include "platform/host/Result.h"

namespace kestrine {

/// The platform's status number for a reason; never 0.
std::int32_t finderErrorNumber(Reason reason);

/// The failure in the form in which scripts and Apple Events report it.
FinderError finderError(const Failure& failure);

} // namespace kestrine
