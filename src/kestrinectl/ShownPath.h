// ShownPath: paths in what a person reads.
#pragma once

#include <string>

namespace kestrine {

/// The shortest path that surely means the same: without "." and repeated or final slashes, as in "a/b" for
/// "./a//b/". ".." stays, since it need not lead back where a link was followed, and so does "./" before a
/// dash. Looks at no file.
std::string shownPath(const std::string& path);

/// `reason` without `path`, for a line that starts with the path already: "cannot open: Permission denied"
/// for "cannot open a.jpg: Permission denied", and "is not a regular file" for "a.jpg is not a regular file".
std::string withoutPath(std::string reason, const std::string& path);

} // namespace kestrine
