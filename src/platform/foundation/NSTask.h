// NSTask: another program run with exactly the arguments given; no shell is involved.
#pragma once

#include "platform/foundation/text/NSString.h"
#include "platform/host/process/ChildProcess.h"

#include <optional>
#include <vector>

namespace kestrine {

/// For one run. The child has our standard streams, current folder and environment.
class NSTask {
public:
    /// `setLaunchPath:`: the program's file; it is not searched for.
    void setLaunchPath(const NSString& path) { launchPath_ = path; }
    /// `setArguments:`: what the program is given behind its own path.
    void setArguments(const std::vector<NSString>& arguments) { arguments_ = arguments; }

    /// `launch`: starts the program. Raises NSInvalidArgumentException when there is no program that could
    /// be started at the launch path, and when the task was launched before.
    void launch();

    /// `waitUntilExit`: blocks until the program has ended; returns at once when it has already. Raises
    /// NSInvalidArgumentException when the task was not launched.
    void waitUntilExit();

private:
    NSString launchPath_;
    std::vector<NSString> arguments_;
    bool isLaunched_ = false;
    std::optional<ChildProcess> child_; ///< until it was waited for
};

} // namespace kestrine
