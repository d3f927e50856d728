// Captures the lines of the platform's log for the lifetime of the object.
#pragma once

#include "platform/foundation/NSLog.h"

namespace kestrine::testing {

class CapturedLog {
public:
    CapturedLog() : before_(setLogSink([this](const NSString& line) { lines_.push_back(line); })) {}
    ~CapturedLog() { setLogSink(before_); }
    CapturedLog(const CapturedLog&) = delete;
    CapturedLog& operator=(const CapturedLog&) = delete;

    /// The lines since the last call.
    std::vector<NSString> takeLines() { return std::exchange(lines_, {}); }

private:
    std::vector<NSString> lines_;
    const LogSink before_;
};

} // namespace kestrine::testing
