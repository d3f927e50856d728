// The commands `undo` and `history`: takes back replacing runs, and lists them.
#pragma once

#include <CLI/CLI.hpp>

namespace kestrine {

void addUndoCommand(CLI::App& program);
void addHistoryCommand(CLI::App& program);

} // namespace kestrine
