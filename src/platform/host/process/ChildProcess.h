// ChildProcess: another program, started with exactly the arguments given. No shell is involved.
#pragma once

#include "platform/host/Result.h"

#include <string>
#include <sys/types.h>
#include <vector>

namespace kestrine {

/// How a program ended.
struct ChildEnd {
    int code;      ///< its exit status, or the number of the signal
    bool bySignal; ///< whether a signal ended it
};

/// Move-only. A child that nobody waits for runs on; it is not ended with its object.
class ChildProcess {
public:
    /// Starts `program` (a name without a slash is looked up in PATH) with the argument vector `program`,
    /// `arguments`. The child has our standard streams, folder and environment, and the usual signals.
    static Result<ChildProcess> start(const std::string& program, const std::vector<std::string>& arguments);

    ChildProcess(ChildProcess&&) = default;
    ChildProcess& operator=(ChildProcess&&) = default;

    /// Blocks until the child has ended. To be called once.
    Result<ChildEnd> wait();

private:
    explicit ChildProcess(pid_t process) : process_(process) {}

    pid_t process_;
};

} // namespace kestrine
