// `kestrinectl run`: carries out a plan, or one shard of it.
#pragma once

#include <CLI/CLI.hpp>

namespace kestrine {

void addRunCommand(CLI::App& program);

} // namespace kestrine
