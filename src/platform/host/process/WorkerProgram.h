// WorkerProgram: what a worker process does.
#pragma once

#include "platform/host/process/MessageSocket.h"
#include "platform/host/process/Sandbox.h"

#include <cstdint>

namespace kestrine {

/// The functions run in the worker, a copy of this process with one thread.
struct WorkerProgram {
    /// Runs before the sandbox: opens libraries. `modules` is the argument of WorkerProcess::start(). May be
    /// null.
    void (*prepare)(std::uint32_t modules);
    /// Runs in the sandbox. Returns when the other end of `requests` is closed. An exception ends the worker
    /// as a crash does.
    void (*serve)(MessageSocket& requests);
    SandboxLimits limits;
};

} // namespace kestrine
