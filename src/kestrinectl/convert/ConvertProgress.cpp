#include "kestrinectl/convert/ConvertProgress.h"

#include "kestrinectl/text/ShownNumbers.h"

namespace kestrine {

namespace {

constexpr std::chrono::milliseconds shortestMeasurement{500};

/// The estimated remaining time. It is computed from bytes if possible, because the time for a file depends
/// on its size.
std::chrono::milliseconds remaining(const ConvertProgress& progress) {
    const bool countsBytes = progress.bytesDone > 0 && progress.bytes >= progress.bytesDone;
    const auto done = static_cast<double>(countsBytes ? progress.bytesDone : progress.done);
    const auto all = static_cast<double>(countsBytes ? progress.bytes : progress.count);
    return std::chrono::milliseconds(
        static_cast<std::int64_t>(static_cast<double>(progress.elapsed.count()) * (all - done) / done));
}

} // namespace

std::string progressText(const ConvertProgress& progress) {
    std::string text = std::to_string(progress.done) + " of " + counted(progress.count, "file")
                       + (progress.countsAll ? "" : " so far");
    if (progress.done == 0 || progress.elapsed < shortestMeasurement)
        return text;
    const double seconds = static_cast<double>(progress.elapsed.count()) / 1000;
    text += ", " + shownShort(static_cast<double>(progress.done) / seconds) + " per second";
    if (progress.bytesAfter > 0)
        text += ", " + shownBytes(progress.bytesBefore) + " -> " + shownBytes(progress.bytesAfter);
    if (progress.countsAll && progress.done < progress.count)
        text += ", " + shownDuration(remaining(progress)) + " left";
    return text;
}

} // namespace kestrine
