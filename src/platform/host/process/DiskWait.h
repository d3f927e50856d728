// DiskWait: whether a process is kept waiting by the system.
#pragma once

#include <sys/types.h>

namespace kestrine {

/// Whether a thread of the process waits for a disk or a file system without being able to do anything else
/// (state D). False if the system does not tell.
bool waitsForDisk(pid_t process);

} // namespace kestrine
