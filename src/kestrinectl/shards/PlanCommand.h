// `kestrinectl plan`: writes down which files a batch has and which names their results get.
#pragma once

#include <CLI/CLI.hpp>

namespace kestrine {

void addPlanCommand(CLI::App& program);

} // namespace kestrine
