#include "kestrinectl/StoppedBySignal.h"

#include "kestrinectl/CommandError.h"
#include "platform/host/process/StopSignals.h"

namespace kestrine {

void throwIfStopped(const std::function<std::string()>& rest) {
    const int signal = StopSignalsNoted::noted();
    if (signal != 0)
        throw CommandError("stopped by " + std::string(nameOfStopSignal(signal))
                               + (rest ? ": " + rest() : ""),
                           128 + signal);
}

} // namespace kestrine
