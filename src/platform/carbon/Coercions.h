// The forms in which one value can be had.
#pragma once

#include "platform/carbon/AEDataModel.h"

#include <optional>

namespace kestrine {

/// As AECoerceDesc() tells; nothing when there is no such form.
std::optional<AEDesc> coerced(const AEDesc& desc, DescType type);

} // namespace kestrine
