// DesktopCommand: `kestrinectl desktop`, actions in file managers.
#pragma once

#include <CLI/CLI.hpp>

namespace kestrine {

void addDesktopCommand(CLI::App& program);

} // namespace kestrine
