// Writes chunks of PNG files.
#pragma once

#include "platform/host/Bytes.h"

#include <initializer_list>
#include <string_view>

namespace kestrine::png {

/// Appends a chunk of `type` (four letters) to `file`. The parts of `content` are joined.
void appendChunk(std::string_view type, std::initializer_list<ByteView> content, Bytes& file);

} // namespace kestrine::png
