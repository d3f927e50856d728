// The command `doctor`: shows what the system offers to kestrinectl, and what to do about what is missing.
#pragma once

#include <CLI/CLI.hpp>

namespace kestrine {

void addDoctorCommand(CLI::App& program);

} // namespace kestrine
