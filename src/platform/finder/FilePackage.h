// File packages: folders that the desktop shows as one file.
#pragma once

#include <string>

namespace kestrine {

/// Whether the path, links followed, is a folder with a package's extension, or one whose Finder information
/// says so. Anything else, what does not exist included, is none.
bool isFilePackage(const std::string& path);

} // namespace kestrine
