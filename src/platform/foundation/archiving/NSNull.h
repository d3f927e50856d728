// NSNull: an object that stands for nothing where nil cannot, as an element of a list.
#pragma once

#include "platform/foundation/NSObject.h"

namespace kestrine {

class NSNull final : public NSObject {};

} // namespace kestrine
