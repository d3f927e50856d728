// A PNG file whose chunks of pixels are replaced by one that holds none.
#pragma once

#include "platform/host/files/ByteReader.h"

namespace kestrine::png {

/// `file` up to `pixels`, where the first chunk of pixels begins, then an empty one, then `file` from
/// `behind` on.
std::shared_ptr<const ByteReader> withoutPixels(std::shared_ptr<const ByteReader> file, std::uint64_t pixels,
                                                std::uint64_t behind);

} // namespace kestrine::png
