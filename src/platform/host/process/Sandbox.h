// The sandbox: a process gives up the rights that it does not need before it reads untrusted bytes.
#pragma once

#include "platform/host/process/SystemCallFilter.h"

#include <cstdint>

namespace kestrine {

/// The resources that a process may still use.
struct SandboxLimits {
    std::uint64_t addressSpace = 0; ///< bytes beyond what the process uses now; 0: no limit
    UnlistedCalls unlistedCalls = UnlistedCalls::asBuilt;
};

/// The layers that are in force. Each one works without the others.
struct SandboxLayers {
    bool limits = false;      ///< the resource limits
    bool landlock = false;    ///< the system denies access by name to files, and to networks
    bool systemCalls = false; ///< only listed system calls are made

    bool operator==(const SandboxLayers&) const = default;
    bool all() const { return limits && landlock && systemCalls; }
};

/// Permanently gives up opening files, starting programs and networking. Open descriptors stay open. For a
/// process with one thread; threads that it starts later have no more rights. Each layer is tried even if
/// another one fails.
SandboxLayers enterSandbox(const SandboxLimits& limits);

} // namespace kestrine
