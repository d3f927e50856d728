// Lines: what kestrinectl prints for people, and how names look in it.
#pragma once

#include <string>
#include <string_view>

namespace kestrine {

/// Prints one line on standard output, as shownText() has it.
void printLine(std::string_view line);

/// The same on standard error, after "kestrinectl: ".
void printMessage(std::string_view line);

/// The path in its shortest form that surely means the same: without "." and repeated or final slashes, as in
/// "a/b" for "./a//b/". ".." stays, since it need not lead back where a link was followed, and so does "./"
/// before a dash. Pure.
std::string shownPath(const std::string& path);

} // namespace kestrine
