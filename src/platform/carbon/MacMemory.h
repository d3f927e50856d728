// The Memory Manager: memory blocks that know their size, accessed by pointer (Ptr) or by handle.
#pragma once

#include "platform/carbon/MacTypes.h"

namespace kestrine {

using Ptr = char*;
using Handle = Ptr*;

// Every function sets MemError() of its thread.

/// A block of zeros, owned by the caller; null when there is no memory or `size` is negative (-108).
Ptr NewPtr(Size size);
/// Null is ignored.
void DisposePtr(Ptr block);
/// 0 for null.
Size GetPtrSize(Ptr block);

/// The same functions for handles.
Handle NewHandle(Size size);
void DisposeHandle(Handle handle);
Size GetHandleSize(Handle handle);

/// A handle's flags; bit 7 means locked. -109 for a null handle.
std::int8_t HGetState(Handle handle);
void HSetState(Handle handle, std::int8_t state);
/// Sets bit 7. Blocks never move, so locking has no other effect.
void HLock(Handle handle);

/// The status of this thread's last call of the functions above.
OSErr MemError();

} // namespace kestrine
