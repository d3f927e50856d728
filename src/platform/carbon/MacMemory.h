// The Memory Manager: blocks of a known size, fixed ones (Ptr) and ones behind a handle.
#pragma once

#include "platform/carbon/MacTypes.h"

#include <optional>

namespace kestrine {

using Ptr = char*;
using Handle = Ptr*;

// Every call leaves its outcome where MemError() finds it, one for each thread.

/// A block of zeros that the caller disposes; null when it cannot be had or `size` is negative.
Ptr NewPtr(Size size);
/// Null is nothing to dispose.
void DisposePtr(Ptr block);
/// 0 for null.
Size GetPtrSize(Ptr block);

/// Likewise, behind a handle.
Handle NewHandle(Size size);
void DisposeHandle(Handle handle);
Size GetHandleSize(Handle handle);

/// A handle's properties; bit 7 says that its block is locked. A null handle has none (-109).
std::int8_t HGetState(Handle handle);
void HSetState(Handle handle, std::int8_t state);
/// Blocks never move here, so that locking one only changes its state.
void HLock(Handle handle);

/// The outcome of this thread's last call above.
OSErr MemError();

/// For tests: while `error` is given, this thread gets no new block and MemError() gives that number.
void refuseMemory(std::optional<OSErr> error);

} // namespace kestrine
