// Formats one number with a printf format, independent of the locale.
#pragma once

#include "platform/foundation/text/NSString.h"

namespace kestrine {

/// `format` with `value` in its first floating-point conversion (e, f, g, a). Other conversions are expanded
/// by expandedFormatText(), so no format reads a missing argument. NaN has no sign. Width and precision are
/// limited to 4096.
NSString formattedNumber(const NSString& format, double value);

/// The same with the first conversion for signed integers (d, i).
NSString formattedNumber(const NSString& format, std::int32_t value);

} // namespace kestrine
