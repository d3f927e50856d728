// Paths as users give them, and the places that they lead to.
#pragma once

#include <filesystem>
#include <string>

namespace kestrine {

/// The path below the current folder if it is relative, without ".". Throws CommandError for an empty path,
/// and for a relative one if the current folder was removed.
std::filesystem::path absolutePath(const std::filesystem::path& path);

/// The path with all links resolved, so that each place has only one; the given path if the system cannot
/// resolve it.
std::filesystem::path canonicalPath(const std::filesystem::path& path);

/// The path with its folder made canonical. Two names of one place are equal; a link in the last part stays.
std::string placeOf(const std::string& path);

/// The path without separators at its end, with which a folder would differ from the folders of its files;
/// "/" stays.
std::filesystem::path withoutTrailingSeparator(const std::filesystem::path& path);

} // namespace kestrine
