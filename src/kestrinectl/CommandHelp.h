// CommandHelp: the layout of help texts, the command `help`, and the message for invalid arguments.
#pragma once

#include <CLI/CLI.hpp>

namespace kestrine {

/// Sets the layout of all help texts; to be called before commands are added.
void useHelpLayout(CLI::App& program);

/// Adds `help [COMMAND]`.
void addHelpCommand(CLI::App& program);

/// One line: what is wrong with the arguments after the program's name, a suggestion, and where to find help.
std::string complaintAbout(const CLI::App& program, const std::vector<std::string>& words,
                           const CLI::ParseError& error);

} // namespace kestrine
