#include "platform/foundation/NSLog.h"

#include <cstdio>

namespace kestrine {

/// One write, so that lines of several threads and processes do not mix.
void NSLog(const NSString& line) {
    const std::string bytes = line.utf8() + '\n';
    (void)std::fwrite(bytes.data(), 1, bytes.size(), stderr);
}

} // namespace kestrine
