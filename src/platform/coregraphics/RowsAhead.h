// RowsAhead: rows that a second thread makes while the first still works on those before them.
#pragma once

#include "platform/coregraphics/RowSource.h"

namespace kestrine {

/// The rows of `input`, unchanged, read from it on a thread of its own that stays a few rows ahead (about
/// half a MiB). What `input` fails with, or throws, comes out where its row would have come. Without a second
/// thread (none to be had, too little to do, or forbidden by a OneThreadScope) this is `input` itself.
RowSourcePointer rowsAhead(RowSourcePointer input);

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
