// Where the sources of this build lie, for tests that read files of the repository.
#pragma once

#include <string>

namespace kestrine {

/// The path of `path` in the repository, which is given relative to its top.
std::string inSourceFolder(const std::string& path);

} // namespace kestrine
