// profileName: the name of a colour profile.
#pragma once

#include "platform/host/Bytes.h"

#include <string>

namespace kestrine {

/// The description in an ICC profile, as UTF-8, at most 300 bytes; "" if none can be read.
std::string profileName(ByteView profile);

} // namespace kestrine
