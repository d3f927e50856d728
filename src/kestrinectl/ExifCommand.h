// kestrinectl exif: what a picture's EXIF says, and its date as the file's creation date.
#pragma once

#include <CLI/CLI.hpp>

namespace kestrine {

/// Adds the command to the program. What it is asked to do happens while the arguments are parsed;
/// CommandError leaves the parser.
void addExifCommand(CLI::App& program);

} // namespace kestrine
