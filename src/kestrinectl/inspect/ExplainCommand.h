// The command `explain`: what a picture is, and what presets would make of it.
#pragma once

#include <CLI/CLI.hpp>

namespace kestrine {

void addExplainCommand(CLI::App& program);

} // namespace kestrine
