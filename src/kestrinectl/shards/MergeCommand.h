// `kestrinectl merge`: joins the logs of the shards of a plan and reports what is missing.
#pragma once

#include <CLI/CLI.hpp>

namespace kestrine {

void addMergeCommand(CLI::App& program);

} // namespace kestrine
