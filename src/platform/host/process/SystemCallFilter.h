// The filter of system calls for a process that only computes, and reads and writes its open descriptors.
#pragma once

namespace kestrine {

/// What happens when a process makes a system call that the filter does not list.
enum class UnlistedCalls {
    asBuilt, ///< fatal in builds for developers, so that they notice it; refused in releases
    refused, ///< the call fails with ENOSYS
    fatal,   ///< the process is killed
};

/// Permanently installs the filter for the calling thread and the threads that it starts. Needs no_new_privs.
/// Returns false if the system has no such filters or refuses this one.
bool allowListedCallsOnly(UnlistedCalls unlisted);

} // namespace kestrine
