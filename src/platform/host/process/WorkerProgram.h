// WorkerProgram: what a worker process does.
#pragma once

#include "platform/host/process/MessageSocket.h"
#include "platform/host/process/Sandbox.h"

#include <cstdint>
#include <functional>

namespace kestrine {

/// A worker is a copy of the process that starts it, with one thread.
struct WorkerProgram {
    /// Runs in the process that starts the workers, before each start: what it opens is inherited by them.
    /// May be empty.
    std::function<void()> prepareCopies;
    /// Runs in the worker, before the sandbox: opens libraries. `modules` is what WorkerProcess::start() was
    /// given. May be empty.
    std::function<void(std::uint32_t modules)> prepare;
    /// Runs in the worker, in the sandbox. Returns when the other end of `requests` is closed. An exception
    /// ends the worker as a crash does.
    std::function<void(MessageSocket& requests)> serve;
    SandboxLimits limits;
};

} // namespace kestrine
