// Text as cameras write it: up to the first zero byte, in UTF-8 or Mac OS Roman.
#pragma once

#include "platform/foundation/text/NSString.h"
#include "platform/host/Bytes.h"

namespace kestrine {

/// The bytes before the first zero byte, or all: as UTF-8 when they are valid UTF-8, else as Mac OS Roman,
/// in which any bytes are text.
NSString exifTextFromBytes(ByteView bytes);

} // namespace kestrine
