// NSNull: a placeholder object for collections, which cannot contain nil.
#pragma once

#include "platform/foundation/NSObject.h"

namespace kestrine {

class NSNull final : public NSObject {};

} // namespace kestrine
