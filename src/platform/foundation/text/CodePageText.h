// Text in the byte encodings of the time before Unicode, decoded strictly by ICU's tables.
#pragma once

#include "platform/foundation/text/NSStringEncoding.h"

namespace kestrine {

/// Mac OS Roman, the Windows code pages, Shift JIS, EUC-JP and ISO-2022-JP as decodedText() tells; nil for
/// every other encoding.
OptionalString textFromCodePage(ByteView bytes, NSStringEncoding encoding);

} // namespace kestrine
