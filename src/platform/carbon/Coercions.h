// Conversions between descriptor types.
#pragma once

#include "platform/carbon/AEDataModel.h"

#include <optional>

namespace kestrine {

/// The value converted as AECoerceDesc() describes; nullopt when there is no conversion.
std::optional<AEDesc> coerced(const AEDesc& desc, DescType type);

} // namespace kestrine
