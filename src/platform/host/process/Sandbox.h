// The sandbox: a process gives up what it does not need before it reads bytes from strangers.
#pragma once

#include "platform/host/process/SystemCallFilter.h"

#include <cstdint>

namespace kestrine {

/// What a process may still use.
struct SandboxLimits {
    std::uint64_t addressSpace = 0; ///< bytes beyond what the process uses now; 0: no limit
    UnlistedCalls unlistedCalls = UnlistedCalls::asBuilt;
};

/// Which layers are in force. Each one holds without the others.
struct SandboxLayers {
    bool limits = false;      ///< the resource limits
    bool landlock = false;    ///< the system denies access by name to files, and to networks
    bool systemCalls = false; ///< only listed system calls are made

    bool operator==(const SandboxLayers&) const = default;
    bool all() const { return limits && landlock && systemCalls; }
};

/// Gives up, for ever, opening files, starting programs and networking. What is open stays open. For a
/// process with one thread; threads that it starts later are bound as well. Each layer is tried even if
/// another one fails.
SandboxLayers enterSandbox(const SandboxLimits& limits);

} // namespace kestrine
