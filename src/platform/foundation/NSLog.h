// NSLog: writes diagnostic lines to standard error.
#pragma once

#include "platform/foundation/text/NSString.h"

namespace kestrine {

/// `NSLog`: writes `line` and a newline. The line is not a format string. Safe to call from several threads.
void NSLog(const NSString& line);

} // namespace kestrine
