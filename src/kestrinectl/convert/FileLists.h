// FileLists: file names from lists.
#pragma once

#include <string>
#include <vector>

namespace kestrine {

/// The names in a list: one per line, after a byte order mark if there is one, or with a zero byte after
/// each. Empty names are left out. `path` is the list, "-" for standard input. Throws CommandError when it
/// cannot be read.
std::vector<std::string> namesInList(const std::string& path, bool withZeroBytes);

} // namespace kestrine
