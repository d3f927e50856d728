// OptionGroups: the options of `convert` and `plan`, grouped by purpose in their help.
#pragma once

#include <CLI/CLI.hpp>

namespace kestrine {

/// Gives the options that the command has their groups. The help has the groups in the order in which their
/// first options were added.
void groupOptions(CLI::App& command);

} // namespace kestrine
