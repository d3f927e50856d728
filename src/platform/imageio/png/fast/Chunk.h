// One chunk of a PNG file.
#pragma once

#include "platform/host/Bytes.h"

#include <initializer_list>
#include <string_view>

namespace kestrine::png {

/// Appends a chunk of that type (four letters) to `file`; its content may come in parts.
void appendChunk(std::string_view type, std::initializer_list<ByteView> content, Bytes& file);

} // namespace kestrine::png
