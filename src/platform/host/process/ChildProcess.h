// ChildProcess: runs another program with exactly the given arguments. No shell is involved.
#pragma once

#include "platform/host/Result.h"

#include <string>
#include <sys/types.h>
#include <vector>

namespace kestrine {

/// How a program ended.
struct ChildEnd {
    int code;      ///< the exit status, or the number of the signal
    bool bySignal; ///< whether a signal ended the program
};

/// Move-only. Destroying the object does not end the child.
class ChildProcess {
public:
    /// Starts `program` with the argument vector `program`, `arguments`. A name without a slash is looked up
    /// in PATH. The child inherits the standard streams, the current folder and the environment. SIGPIPE and
    /// SIGXFSZ have their default actions, and no signal is blocked.
    static Result<ChildProcess> start(const std::string& program, const std::vector<std::string>& arguments);

    ChildProcess(ChildProcess&&) = default;
    ChildProcess& operator=(ChildProcess&&) = default;

    /// Waits until the child has ended. To be called once.
    Result<ChildEnd> wait();

private:
    explicit ChildProcess(pid_t process) : process_(process) {}

    pid_t process_;
};

} // namespace kestrine
