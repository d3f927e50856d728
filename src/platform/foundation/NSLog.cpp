#include "platform/foundation/NSLog.h"

#include <cstdio>
#include <mutex>
#include <utility>

namespace kestrine {
namespace {

struct Log {
    std::mutex mutex;
    LogSink sink;
};

Log& platformLog() {
    static Log log;
    return log;
}

/// In one piece, so that lines of several processes on one terminal stay whole.
void writeToStandardError(const NSString& line) {
    const std::string bytes = line.utf8() + '\n';
    (void)std::fwrite(bytes.data(), 1, bytes.size(), stderr);
}

} // namespace

void NSLog(const NSString& line) {
    Log& log = platformLog();
    const std::lock_guard lock(log.mutex);
    if (log.sink)
        log.sink(line);
    else
        writeToStandardError(line);
}

LogSink setLogSink(LogSink sink) {
    Log& log = platformLog();
    const std::lock_guard lock(log.mutex);
    return std::exchange(log.sink, std::move(sink));
}

} // namespace kestrine
