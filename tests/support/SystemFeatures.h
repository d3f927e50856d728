// What the system offers to tests. Tests are skipped by these answers only, which come straight from the
// system: if they came from the code under test, a broken function would skip its own tests.
#pragma once

#include <cstddef>
#include <filesystem>

namespace kestrine::testing {

/// Whether files in `folder` can have "user." extended attributes of `size` bytes.
bool keepsAttributes(const std::filesystem::path& folder, std::size_t size = 1);

/// Whether files in the system's temporary folder can have them.
bool keepsAttributes();

/// Whether the ICU libraries are installed.
bool isICUInstalled();

} // namespace kestrine::testing
