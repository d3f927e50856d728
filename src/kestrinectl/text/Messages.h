// Messages: the output of the commands for people. Names and other text from outside are escaped on a
// terminal and unchanged in pipes.
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

/// "kestrinectl: hint: MESSAGE" to standard error: what could be better.
void printHint(const std::string& message);

/// A name as messages show it: "Web", in quotation marks.
std::string quoted(const std::string& name);

} // namespace kestrine
