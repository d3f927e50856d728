// One number in a format text, as a formatted print would show it, whatever the locale.
#pragma once

#include "platform/foundation/text/NSString.h"

namespace kestrine {

/// `format` with `value` in its first conversion for floating numbers (e, f, g, a). Everything else is shown
/// as expandedFormatText() says, so that no format reads an argument that is not there. NaN has no sign.
/// Width and precision are held at 4096.
NSString formattedNumber(const NSString& format, double value);

/// The same with the first conversion for signed integers (d, i).
NSString formattedNumber(const NSString& format, std::int32_t value);

} // namespace kestrine
