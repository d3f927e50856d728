// The source folder of this build, for tests that read files of the repository.
#pragma once

#include <string>

namespace kestrine {

/// The absolute path of `path`, which is relative to the top of the repository.
std::string inSourceFolder(const std::string& path);

} // namespace kestrine
