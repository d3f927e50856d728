// TypedStreamReader: takes the bytes of an archive apart. It knows the container and no class.
#pragma once

#include "platform/foundation/archiving/TypedStream.h"
#include "platform/host/Result.h"

namespace kestrine {

/// Reads the header and the first group, which must be one object; bytes behind it are not looked at. Both
/// byte orders are understood. The result looks into `bytes`, which must outlive it. Memory stays within some
/// forty times their number, and nesting within a fixed depth, whatever the bytes.
Result<TypedStream> readTypedStream(ByteView bytes);

} // namespace kestrine
