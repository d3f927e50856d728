// LockedLog: opens the logs that only one run at a time may use.
#pragma once

#include "platform/host/files/LineLog.h"

namespace kestrine {

/// What to do while another process uses the file.
enum class WhenBusy : bool { waits, fails };

/// Opens or creates a log. `noun` names it in messages, for example "manifest". Throws CommandError if it
/// cannot be written or is in use, or if a stop signal ends the wait.
LineLog openLockedLog(const std::string& noun, const std::string& path, WhenBusy whenBusy);

} // namespace kestrine
