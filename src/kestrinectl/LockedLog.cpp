#include "kestrinectl/LockedLog.h"

#include "kestrinectl/CommandError.h"
#include "kestrinectl/StoppedBySignal.h"
#include "kestrinectl/text/Messages.h"
#include "kestrinectl/text/ShownPath.h"

namespace kestrine {

LineLog openLockedLog(const std::string& noun, const std::string& path, WhenBusy whenBusy) {
    const std::string shown = noun + " " + shownPath(path);
    Result<LineLog> log = LineLog::open(path, [&] {
        if (whenBusy == WhenBusy::waits)
            printError("waiting for another run that uses the " + shown);
        return whenBusy == WhenBusy::waits;
    });
    if (!log)
        throwIfStopped();
    if (!log && log.failure().reason == Reason::alreadyExists)
        throw CommandError("another run uses the " + shown + "; without --no-wait this run waits for it");
    if (!log)
        throw CommandError("the " + noun + " cannot be written: " + log.failure().text);
    return *std::move(log);
}

} // namespace kestrine
