// Decoding of encodings other than Unicode, with ICU's tables.
#pragma once

#include "platform/foundation/text/NSStringEncoding.h"

namespace kestrine {

/// Decodes Mac OS Roman, the Windows code pages, Shift JIS, EUC-JP and ISO-2022-JP as described for
/// decodedText(). Nil for every other encoding.
OptionalString textFromCodePage(ByteView bytes, NSStringEncoding encoding);

} // namespace kestrine
