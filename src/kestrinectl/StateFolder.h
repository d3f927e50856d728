// StateFolder: where kestrinectl keeps what it must remember between runs.
#pragma once

#include <string>

namespace kestrine {

/// The folder of that name in the user's state folder, such as ~/.local/state/kestrine/journal; it may be
/// missing. "" for a user without a home.
std::string stateFolder(const std::string& name);

} // namespace kestrine
