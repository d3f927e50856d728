// The command `kestrinectl convert`: applies sets to many files, on all cores.
#pragma once

#include <CLI/CLI.hpp>

namespace kestrine {

void addConvertCommand(CLI::App& program);

} // namespace kestrine
