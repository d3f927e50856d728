// kestrinectl sets: lists, shows, makes and changes presets.
#pragma once

#include <CLI/CLI.hpp>

namespace kestrine {

/// Adds the command to the program. It runs while the arguments are parsed; its CommandError leaves the
/// parser.
void addSetsCommand(CLI::App& program);

} // namespace kestrine
