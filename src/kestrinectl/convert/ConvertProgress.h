// ConvertProgress: how far a conversion is, for the last line of a terminal.
#pragma once

#include "kestrinectl/convert/ConvertTotals.h"

#include <string>

namespace kestrine {

/// The figures that progress is computed from.
struct ConvertProgress {
    std::size_t done = 0, count = 0;               ///< files
    bool countsAll = true;                         ///< whether no more files will be found
    std::uint64_t bytesDone = 0, bytes = 0;        ///< of the files
    std::uint64_t bytesBefore = 0, bytesAfter = 0; ///< of those that were converted, and of their results
    std::chrono::milliseconds elapsed{0};
};

/// "12 of 340 files, 4.1 per second, 45 MB -> 3.2 MB, 1 min 20 s left", or "12 of 340 files so far" while
/// files are searched for. Rate and remaining time are left out until they can be estimated. Shorter than 80
/// columns.
std::string progressText(const ConvertProgress& progress);

} // namespace kestrine
