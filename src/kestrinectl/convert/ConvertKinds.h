// ConvertKinds: short names for reasons, by which totals and scripts group failures.
#pragma once

#include "platform/host/Result.h"

#include <string_view>

namespace kestrine {

/// "not found" for Reason::notFound, and so on. Scripts rely on these names.
std::string_view kindOf(Reason reason);

} // namespace kestrine
