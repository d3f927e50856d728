// WorkerProgram: what a worker process does.
#pragma once

#include "platform/host/process/MessageSocket.h"
#include "platform/host/process/Sandbox.h"

#include <cstdint>
#include <functional>

namespace kestrine {

/// The functions run in the worker, a copy of this process with one thread.
struct WorkerProgram {
    /// Runs before the sandbox: opens libraries. `modules` is what WorkerProcess::start() was given. May be
    /// empty.
    std::function<void(std::uint32_t modules)> prepare;
    /// Runs in the sandbox. Returns when the other end of `requests` is closed. An exception ends the worker
    /// as a crash does.
    std::function<void(MessageSocket& requests)> serve;
    SandboxLimits limits;
};

} // namespace kestrine
