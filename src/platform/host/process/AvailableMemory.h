// How much memory this process may still use.
#pragma once

#include <cstdint>
#include <string>

namespace kestrine {

/// In bytes: the smallest of what the system has available, what the control groups of this process have
/// left, and what its limit of address space leaves. 1 GiB if none of these is known. `root` is prepended to
/// the paths of the system's files; only tests change it.
std::uint64_t availableMemory(const std::string& root = "");

/// The memory that the machine has, in bytes. Reads no file. 1 GiB if the system does not say.
std::uint64_t installedMemory();

} // namespace kestrine
