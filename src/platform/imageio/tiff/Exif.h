// The EXIF of a TIFF file. It is not a separate block there: the picture's directory points to its
// directories.
#pragma once

#include "platform/imageio/tiff/Structure.h"

namespace kestrine::tiff {

/// A block, in the file's byte order, with the EXIF and GPS directories that the page at `directory` points
/// to, and with the page's own entries about the picture. Empty when it has neither, or only a resolution.
Bytes exifOfTIFF(const Structure& file, std::uint64_t directory);

/// A directory of a file.
struct DirectoryPlace {
    const Structure& file;
    Structure::Directory entries;
};

/// The same for a page and an EXIF directory in two files with the same byte order.
Bytes exifOfParts(const DirectoryPlace& page, const DirectoryPlace& exif);

} // namespace kestrine::tiff
