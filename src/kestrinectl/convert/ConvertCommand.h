// The command `kestrinectl convert`: applies sets to many files, on all cores.
#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

namespace kestrine {

void addConvertCommand(CLI::App& program);

/// Does the same as `convert --quiet --set NAME -- FILES`. Throws CommandError.
void convertBySet(const std::string& name, const std::vector<std::string>& files);

} // namespace kestrine
