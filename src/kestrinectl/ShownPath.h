// ShownPath: paths in output for people.
#pragma once

#include <string>

namespace kestrine {

/// The shortest path that surely means the same: without "." and repeated or final slashes, as in "a/b" for
/// "./a//b/". ".." stays, since after a link it may not lead to the previous folder, and so does "./" before
/// a dash. Does not access files.
std::string shownPath(const std::string& path);

} // namespace kestrine
