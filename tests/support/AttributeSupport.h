// Asks the system whether a file system stores extended attributes, so that tests can be skipped where it
// does not. The answer does not come from the code under test, because a broken function would then skip its
// own tests.
#pragma once

#include "tests/support/TemporaryFolder.h"

#include <string>
#include <sys/xattr.h>

namespace kestrine::testing {

/// Whether the file or folder at `path` accepts a "user." attribute of `size` bytes. The attribute is removed
/// again.
inline bool keepsAttributes(const std::string& path, std::size_t size = 1) {
    constexpr const char* name = "user.kestrine.probe";
    return ::setxattr(path.c_str(), name, std::string(size, 'x').data(), size, 0) == 0
           && ::removexattr(path.c_str(), name) == 0;
}

/// Whether files in the system's temporary folder accept one.
inline bool keepsAttributes() { return keepsAttributes(TemporaryFolder().path()); }

} // namespace kestrine::testing
