// kestrinectl sets: looking at presets, making and changing them.
#pragma once

#include <CLI/CLI.hpp>

namespace kestrine {

/// Adds the command to the program. What it is asked to do happens while the arguments are parsed;
/// CommandError leaves the parser.
void addSetsCommand(CLI::App& program);

} // namespace kestrine
