// Rare kinds of TIFF pages (YCbCr without JPEG, logarithmic, ...): libtiff itself converts them to 8-bit RGB.
#pragma once

#include "platform/imageio/tiff/Page.h"

namespace kestrine::tiff {

/// The rows of a page whose color is Color::rendered. `file` is at `page`.
RowSourcePointer renderedRowsOfTIFF(std::unique_ptr<File> file, std::shared_ptr<const Page> page);

} // namespace kestrine::tiff
