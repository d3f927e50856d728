// The filter of system calls of a process that only computes, and reads and writes descriptors it was given.
#pragma once

namespace kestrine {

/// What happens when a process makes a system call that the filter does not list.
enum class UnlistedCalls {
    asBuilt, ///< fatal in builds for developers, so that they notice it; refused in releases
    refused, ///< the call fails with ENOSYS
    fatal,   ///< the process is killed
};

/// Installs the filter for the calling thread and the threads that it starts, for ever. Needs no_new_privs.
/// Returns false if the system has no such filters or refuses this one.
bool allowListedCallsOnly(UnlistedCalls unlisted);

} // namespace kestrine
