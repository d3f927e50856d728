// Corrects the order of chunks in PNG files.
#pragma once

#include "platform/host/files/ByteReader.h"

#include <memory>

namespace kestrine::png {

/// Reads the same file with its transparency (tRNS) after its colour table (PLTE), where the format requires
/// it: libpng skips it elsewhere. Returns `file` itself if nothing has to be moved.
std::shared_ptr<const ByteReader> withTransparencyAfterColors(std::shared_ptr<const ByteReader> file);

} // namespace kestrine::png
