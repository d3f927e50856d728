// The features of the system that tests need. These functions ask the system directly: if they used the code
// under test, a broken function would skip its own tests.
#pragma once

#include <cstddef>
#include <filesystem>

namespace kestrine::testing {

/// Whether files in `folder` can have "user." extended attributes of `size` bytes.
bool keepsAttributes(const std::filesystem::path& folder, std::size_t size = 1);

/// Whether files in the system's temporary folder can have them.
bool keepsAttributes();

/// Whether the system has Landlock and lets this process use it.
bool hasLandlock();

/// Whether a process may install a filter of its system calls here.
bool permitsSystemCallFilters();

/// Whether sums and products that do not fit wrap or saturate in libjpeg-turbo as in its code for x86. They
/// occur with coefficients that no encoder writes. Our decoder follows the code for x86 on every processor.
#if defined(__x86_64__)
constexpr bool libraryOverflowsAsOnX86 = true;
#else
constexpr bool libraryOverflowsAsOnX86 = false;
#endif

} // namespace kestrine::testing
