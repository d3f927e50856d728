// ShownPath: paths in output for people.
#pragma once

#include <string>

namespace kestrine {

/// The shortest path that surely means the same: without "." and repeated or final slashes, as in "a/b" for
/// "./a//b/". ".." stays, since after a link it may not lead to the previous folder, and so does "./" before
/// a dash. Does not access files.
std::string shownPath(const std::string& path);

/// `reason` without `path`, for a line that starts with the path already: "cannot open: Permission denied"
/// for "cannot open a.jpg: Permission denied", and "is not a regular file" for "a.jpg is not a regular file".
std::string withoutPath(std::string reason, const std::string& path);

} // namespace kestrine
