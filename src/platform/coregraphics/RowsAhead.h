// RowsAhead: lets other threads prepare rows while the caller's thread works on the rows before.
#pragma once

#include "platform/coregraphics/RowSource.h"

#include <vector>

namespace kestrine {

/// The rows of `input`, read by a second thread that stays about one MiB ahead. Failures and exceptions of
/// `input` appear at the row where they happened. Returns `input` itself if it is read ahead already or if no
/// second thread is used: the system cannot start one, the picture is small, or a OneThreadScope forbids it.
RowSourcePointer rowsAhead(RowSourcePointer input);

/// How many threads should share the work on a picture of this format; 1 if more would not help.
std::size_t usefulThreads(const RowFormat& format);

/// The rows of a picture that several sources decode, each on its own thread. The picture consists of
/// bands of `rowsPerBand` rows, and of n parts `parts[k]` delivers the rows of the bands k, k + n, k + 2n,
/// ... All parts have the format of the whole picture.
RowSourcePointer rowsInTurns(std::vector<RowSourcePointer> parts, std::size_t rowsPerBand);

/// As long as it exists, rowsAhead() starts no thread for the current thread, and usefulThreads() is 1. For
/// callers that keep all cores busy with one picture each.
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
