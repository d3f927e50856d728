// kestrinectl exif: shows EXIF data and sets the creation date of a file from it.
#pragma once

#include <CLI/CLI.hpp>

namespace kestrine {

/// Adds the command to the program. It runs while the arguments are parsed; its CommandError leaves the
/// parser.
void addExifCommand(CLI::App& program);

} // namespace kestrine
