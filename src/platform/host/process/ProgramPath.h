// Where programs are.
#pragma once

#include <string>
#include <vector>

namespace kestrine {

/// The path of the running program, without links; "" if the system does not say.
std::string pathOfThisProgram();

/// The path of the shared library that contains this code, or of the program that it is linked into, without
/// links. "" if the loader knows only a relative path, since the current folder may have changed.
std::string pathOfThisLibrary();

/// The paths at which a program may be, in the order of PATH; a name with a slash is its own path. Does not
/// access files.
std::vector<std::string> possiblePathsOf(const std::string& program);

/// Whether the user may run a program of this name.
bool programExists(const std::string& program);

} // namespace kestrine
