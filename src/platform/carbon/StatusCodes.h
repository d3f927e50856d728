// Failures as status codes, by the table in FinderErrors.h.
#pragma once

#include "platform/carbon/MacTypes.h"
#include "platform/finder/FinderErrors.h"

namespace kestrine {

inline OSErr statusCodeFor(const Failure& failure) {
    return static_cast<OSErr>(finderErrorNumber(failure.reason));
}

} // namespace kestrine
