// Runs a part of a test in a child process, which may drop privileges, mount file systems and change the
// state of the process. Expectations work in the child as usual, and the parent reports its result.
#pragma once

#include <functional>
#include <string>

namespace kestrine::testing {

/// Runs `steps` in a child process. The current test fails or is skipped if that happens in the child.
void runIsolated(const std::function<void()>& steps);

/// Does the same as runIsolated(), without root privileges. The folders that `steps` use must be accessible
/// to all users.
void runAsOrdinaryUser(const std::function<void()>& steps);

/// Does the same as runIsolated(), with private mounts. Skips the test if the system does not permit them.
void runWithOwnMounts(const std::function<void()>& steps);

/// For use in runWithOwnMounts(): mounts an empty file system of the given size in KiB on the new folder
/// `folder`.
void mountFileSystem(const std::string& folder, unsigned kibibytes);

/// For use in runWithOwnMounts(): mounts the folder `source` also on the new folder `folder`.
void mountAgain(const std::string& source, const std::string& folder);

/// For use in a child process: from now on the system call `number` (such as SYS_fsync) fails with `error`.
/// Returns false if the system does not permit such a filter.
bool failSystemCall(long number, int error);

} // namespace kestrine::testing
