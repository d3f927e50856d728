// An event's parameters as one record.
#pragma once

#include "platform/carbon/AEEvents.h"

namespace kestrine {

/// Puts `parameters` in place of all that the event has; -1707 when it is no event.
OSErr setParameters(AppleEvent& event, const AERecord& parameters);

} // namespace kestrine
