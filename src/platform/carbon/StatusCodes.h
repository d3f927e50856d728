// The platform's status codes for failures of the file side of this system; the Finder has the one table.
#pragma once

#include "platform/carbon/MacTypes.h"
#include "platform/finder/FinderErrors.h"

namespace kestrine {

inline OSErr statusCodeFor(const Failure& failure) {
    return static_cast<OSErr>(finderErrorNumber(failure.reason));
}

} // namespace kestrine
