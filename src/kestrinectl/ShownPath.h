// ShownPath: how messages write the path of a file.
#pragma once

#include <string>

namespace kestrine {

/// The path in its shortest form that surely means the same: without "." and repeated or final slashes, as in
/// "a/b" for "./a//b/". ".." stays, since it need not lead back where a link was followed, and so does "./"
/// before a dash. Pure.
std::string shownPath(const std::string& path);

} // namespace kestrine
