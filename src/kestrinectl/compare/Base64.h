// base64: bytes as text (RFC 4648, section 4).
#pragma once

#include "platform/host/Bytes.h"

#include <string>

namespace kestrine {

/// The bytes in Base64, with padding and without line breaks.
std::string base64(ByteView bytes);

} // namespace kestrine
