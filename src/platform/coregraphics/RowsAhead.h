// RowsAhead: rows that other threads make while the first still works on those before them.
#pragma once

#include "platform/coregraphics/RowSource.h"

#include <vector>

namespace kestrine {

/// The rows of `input`, unchanged, read from it on a thread of its own that stays a few rows ahead (about
/// a MiB). What `input` fails with, or throws, comes out where its row would have come. Without a second
/// thread (none to be had, too little to do, or forbidden by a OneThreadScope) this is `input` itself, as it
/// is when others read ahead for it already.
RowSourcePointer rowsAhead(RowSourcePointer input);

/// How many threads may share the work on a picture of this format: 1 when there is no use in more.
std::size_t usefulThreads(const RowFormat& format);

/// The rows of a picture whose parts are independent: cut into bands of `rowsABand` rows, of which `parts[k]`
/// delivers the bands k, k + n, k + 2n, ..., n being the number of parts, each on a thread of its own. All
/// parts have the format of the whole picture.
RowSourcePointer rowsInTurns(std::vector<RowSourcePointer> parts, std::size_t rowsABand);

/// While it lives, rowsAhead() starts no threads for this thread: for callers that keep every core busy with
/// pictures of their own.
class OneThreadScope {
public:
    OneThreadScope();
    ~OneThreadScope();
    OneThreadScope(const OneThreadScope&) = delete;
    OneThreadScope& operator=(const OneThreadScope&) = delete;
};

} // namespace kestrine
