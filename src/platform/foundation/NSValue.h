// NSValue: a range as an object, for use in collections.
#pragma once

#include "platform/foundation/text/NSString.h"

namespace kestrine {

class NSValue final : public NSObject {
public:
    /// `valueWithRange:`.
    explicit NSValue(NSRange range) : range_(range) {}

    NSRange rangeValue() const { return range_; }

private:
    const NSRange range_;
};

} // namespace kestrine
