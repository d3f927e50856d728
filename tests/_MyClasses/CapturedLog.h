// Captures the lines that NSLog() writes, which is everything on standard error, during its lifetime.
#pragma once

#include "platform/foundation/NSLog.h"

#include <gtest/gtest.h>
#include <sstream>
#include <vector>

namespace kestrine::testing {

class CapturedLog {
public:
    CapturedLog() { ::testing::internal::CaptureStderr(); }
    ~CapturedLog() { (void)::testing::internal::GetCapturedStderr(); }
    CapturedLog(const CapturedLog&) = delete;
    CapturedLog& operator=(const CapturedLog&) = delete;

    /// The lines since the last call.
    std::vector<NSString> takeLines() {
        std::istringstream text(::testing::internal::GetCapturedStderr());
        ::testing::internal::CaptureStderr();
        std::vector<NSString> lines;
        for (std::string line; std::getline(text, line);)
            lines.push_back(NSString::fromUTF8(line));
        return lines;
    }
};

} // namespace kestrine::testing
