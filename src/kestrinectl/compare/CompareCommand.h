// CompareCommand: pages that show results beside each other and over the original.
#pragma once

#include <CLI/CLI.hpp>

namespace kestrine {

/// Adds `compare`.
void addCompareCommand(CLI::App& program);

/// Adds `sets preview` to `sets`, which was added before.
void addPreviewCommand(CLI::App& program);

} // namespace kestrine
