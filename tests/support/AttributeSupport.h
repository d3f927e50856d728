// Asks the system which extended attributes a file system keeps, so that a test can skip where there are
// none.
#pragma once

#include <string>
#include <sys/xattr.h>

namespace kestrine::testing {

/// Whether the file at `path` takes a "user." attribute of `size` bytes. The attribute is removed again.
inline bool keepsAttributes(const std::string& path, std::size_t size = 1) {
    constexpr const char* name = "user.kestrine.probe";
    return ::setxattr(path.c_str(), name, std::string(size, 'x').data(), size, 0) == 0
           && ::removexattr(path.c_str(), name) == 0;
}

} // namespace kestrine::testing
