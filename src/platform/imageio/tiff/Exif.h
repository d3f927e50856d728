// The EXIF of a TIFF file. It has no block of its own there: its directories hang on the picture's own.
#pragma once

#include "platform/imageio/tiff/Structure.h"

namespace kestrine::tiff {

/// A block, in the file's byte order, with the EXIF directory that the page at `directory` points to and what
/// the page itself says of the picture's origin and place on paper. Empty when it points to none.
Bytes exifOfTIFF(const Structure& file, std::uint64_t directory);

} // namespace kestrine::tiff
