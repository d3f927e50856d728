// FileURI: the path that a "file:" URI (RFC 8089) names on this machine.
#pragma once

#include "platform/host/Result.h"

#include <string>
#include <string_view>

namespace kestrine {

/// The absolute path as bytes, with percent escapes decoded. Fails with malformed for another scheme or
/// machine, a query or fragment, an invalid escape and an escaped zero byte.
Result<std::string> pathOfFileURI(std::string_view uri);

} // namespace kestrine
