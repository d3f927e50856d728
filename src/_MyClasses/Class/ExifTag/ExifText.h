// Decodes EXIF strings, which cameras write in UTF-8 or Mac OS Roman.
#pragma once

#include "platform/foundation/text/NSString.h"
#include "platform/host/Bytes.h"

namespace kestrine {

/// The string up to the first zero byte or the end: UTF-8 if it is valid, else Mac OS Roman, in which all
/// bytes are valid.
NSString exifTextFromBytes(ByteView bytes);

} // namespace kestrine
