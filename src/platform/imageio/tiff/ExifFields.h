// ExifFields: an EXIF block as directories of a TIFF file.
#pragma once

#include "platform/imageio/tiff/StoredDirectory.h"

namespace kestrine::tiff {

/// Each directory without the pointers to others; empty if the block has none.
struct ExifFields {
    StoredDirectory page, exif, interoperability, gps;
};

/// The entries of a block, which begins with the TIFF header. Empty directories if it is empty or damaged.
ExifFields exifFields(ByteView block);

} // namespace kestrine::tiff
