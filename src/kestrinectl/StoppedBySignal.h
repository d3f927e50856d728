// Ends a command that a stop signal has stopped, with the exit status that shells use: 128 plus the signal
// number.
#pragma once

#include <functional>
#include <string>

namespace kestrine {

/// Throws CommandError if StopSignalsNoted has noted a signal. `rest` gives the end of the message: what is
/// done and what is left.
void throwIfStopped(const std::function<std::string()>& rest = nullptr);

} // namespace kestrine
