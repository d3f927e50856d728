// Simulates a lack of memory in the Memory Manager.
#pragma once

#include "platform/carbon/MacTypes.h"

#include <optional>

namespace kestrine {

/// While `error` has a value, this thread gets no new blocks, and MemError() reports that number.
void refuseMemory(std::optional<OSErr> error);

} // namespace kestrine
