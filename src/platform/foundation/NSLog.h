// NSLog: the platform's log, a few diagnostic lines for people who look at standard error.
#pragma once

#include "platform/foundation/text/NSString.h"

#include <functional>

namespace kestrine {

/// Logs one line as it is: nothing in it is taken for a format. Safe to call from several threads.
void NSLog(const NSString& line);

/// Receives every line instead of standard error.
using LogSink = std::function<void(const NSString& line)>;

/// For tests: sends the lines to `sink` from now on, or to standard error again when it is empty. Gives back
/// the sink before. A sink must not log itself.
LogSink setLogSink(LogSink sink);

} // namespace kestrine
