// Ends a command that a stop signal has stopped, with the exit status that shells use: 128 and the signal.
#pragma once

#include <functional>
#include <string>

namespace kestrine {

/// Throws CommandError if StopSignalsNoted has noted a signal. `rest` ends the message: what is done and
/// left.
void throwIfStopped(const std::function<std::string()>& rest = nullptr);

} // namespace kestrine
