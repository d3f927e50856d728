// Running a part of a test in a process of its own, which may give up rights, mount file systems and change
// what belongs to the whole process. Expectations work in it as usual; the parent repeats its verdict.
#pragma once

#include <functional>
#include <string>

namespace kestrine::testing {

/// Fails, or skips, the current test when `steps` did so in the child.
void runIsolated(const std::function<void()>& steps);

/// As runIsolated, without the rights of root. Folders that the steps use must be open to everybody.
void runAsOrdinaryUser(const std::function<void()>& steps);

/// As runIsolated, with mounts of its own; skips the test where the system does not permit that.
void runWithOwnMounts(const std::function<void()>& steps);

/// For use inside runWithOwnMounts: an empty file system of that size (in KiB) on a new folder.
void mountFileSystem(const std::string& folder, unsigned kibibytes);

/// The same, showing `source` in a second place.
void mountAgain(const std::string& source, const std::string& folder);

/// For use in any of them: from now on the system call `number` (SYS_fsync) fails with that error. Returns
/// false where the system permits no such filter.
bool failSystemCall(long number, int error);

} // namespace kestrine::testing
