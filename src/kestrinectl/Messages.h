// Messages: what the commands print for people. Names and other foreign text in it are escaped on a terminal
// and stay as they are in pipes.
#pragma once

#include <string>

namespace kestrine {

/// One line to standard output.
void printLine(const std::string& line);

/// Several lines to standard output; each of them ends with a newline.
void printLines(const std::string& lines);

/// "kestrinectl: MESSAGE" to standard error: why a command failed.
void printError(const std::string& message);

/// "kestrinectl: warning: MESSAGE" to standard error; the exit status stays 0.
void printWarning(const std::string& message);

/// A name as it stands in messages: "Web", in quotation marks.
std::string quoted(const std::string& name);

} // namespace kestrine
