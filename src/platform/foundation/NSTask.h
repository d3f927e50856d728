// NSTask: runs another program with exactly the given arguments. No shell is involved.
#pragma once

#include "platform/foundation/text/NSString.h"
#include "platform/host/process/ChildProcess.h"

#include <optional>
#include <vector>

namespace kestrine {

/// A task runs once. The child inherits the standard streams, the current folder and the environment.
class NSTask {
public:
    /// `setLaunchPath:`: the file of the program. PATH is not searched.
    void setLaunchPath(const NSString& path) { launchPath_ = path; }
    /// `setArguments:`: the arguments after the program's own path.
    void setArguments(const std::vector<NSString>& arguments) { arguments_ = arguments; }

    /// `launch`: starts the program. Raises NSInvalidArgumentException if the program cannot be started, and
    /// if the task was launched before.
    void launch();

    /// `waitUntilExit`: waits until the program has ended. Raises NSInvalidArgumentException if the task was
    /// not launched.
    void waitUntilExit();

private:
    NSString launchPath_;
    std::vector<NSString> arguments_;
    bool isLaunched_ = false;
    std::optional<ChildProcess> child_; ///< empty after the wait
};

} // namespace kestrine
