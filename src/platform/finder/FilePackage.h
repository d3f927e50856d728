// File packages: folders that the desktop shows as one file.
#pragma once

#include <string>

namespace kestrine {

/// Whether `path` (links are followed) is a folder that has a package's extension or is marked as a package
/// by its Finder information. False when nothing is there.
bool isFilePackage(const std::string& path);

} // namespace kestrine
