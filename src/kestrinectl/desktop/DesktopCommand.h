// DesktopCommand: `kestrinectl desktop`, actions in file managers.
#pragma once

#include "models/StoredPresets.h"

#include <CLI/CLI.hpp>

namespace kestrine {

void addDesktopCommand(CLI::App& program);

/// After the names of sets have changed: a hint if actions are installed that do not fit them.
void remindOfDesktopActions(const ResizeSets& sets);

} // namespace kestrine
