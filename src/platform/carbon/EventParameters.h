// Sets all parameters of an event at once.
#pragma once

#include "platform/carbon/AEEvents.h"

namespace kestrine {

/// Replaces all parameters with `fields`; -1707 when `event` is not an event.
OSErr setParameters(AppleEvent& event, const AERecord& fields);

} // namespace kestrine
