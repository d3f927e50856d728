// TypedStreamReader: parses the bytes of an archive. It is independent of the archived classes.
#pragma once

#include "platform/foundation/archiving/TypedStream.h"
#include "platform/host/Result.h"

namespace kestrine {

/// Reads the header and the first group, which must be one object. Further bytes are ignored. Both byte
/// orders are supported. The result refers to `bytes`, which must outlive it. For any input the result takes
/// at most about forty times the memory of `bytes`, and nesting is limited.
Result<TypedStream> readTypedStream(ByteView bytes);

} // namespace kestrine
