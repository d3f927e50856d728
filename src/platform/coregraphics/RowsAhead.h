// RowsAhead: lets a crew prepare rows ahead of those that are used.
#pragma once

#include "platform/coregraphics/Crew.h"
#include "platform/coregraphics/RowSource.h"

#include <vector>

namespace kestrine {

/// The rows of `input`, which the current crew prepares up to one MiB ahead. Failures and exceptions of
/// `input` appear at the row where they happened. Returns `input` itself if it is read ahead already or if
/// there is no crew for it (crewFor()).
RowSourcePointer rowsAhead(RowSourcePointer input);

/// The rows of a picture that several sources decode, at the same time if there is a crew for it. The picture
/// consists of bands of `rowsPerBand` rows, and of n parts `parts[k]` delivers the rows of the bands k, k +
/// n, k + 2n, ... All parts have the format of the whole picture.
RowSourcePointer rowsInTurns(std::vector<RowSourcePointer> parts, std::size_t rowsPerBand);

/// How many threads should share the work on a picture of this format; 1 if more would not help.
std::size_t usefulThreads(const RowFormat& format);

/// The current crew; null if a picture of this format is too small to profit from it.
std::shared_ptr<Crew> crewFor(const RowFormat& format);

/// A new crew for one picture; null if there is one core, or a OneThreadScope.
std::shared_ptr<Crew> crewOfAllCores();

/// As long as it exists, there is no crew for the pictures of the current thread, and usefulThreads() is 1.
/// For callers that keep all cores busy with one picture each.
class OneThreadScope {
public:
    OneThreadScope();
    ~OneThreadScope();
    OneThreadScope(const OneThreadScope&) = delete;
    OneThreadScope& operator=(const OneThreadScope&) = delete;

    /// Whether one exists for the current thread.
    static bool exists();
};

} // namespace kestrine
