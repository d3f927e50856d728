// Opens the files that the commands for plans read.
#pragma once

#include <fstream>
#include <string>

namespace kestrine {

/// `kind` is "plan" or "log", for messages. Throws CommandError if the file cannot be opened.
std::ifstream openedInput(const std::string& kind, const std::string& path);

} // namespace kestrine
