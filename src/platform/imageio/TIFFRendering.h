// Rare kinds of TIFF pages (YCbCr without JPEG, logarithmic, ...): libtiff itself makes 8-bit RGB of them.
#pragma once

#include "platform/imageio/TIFFPage.h"

namespace kestrine {

/// The rows of a page whose color is TIFFColor::rendered.
Result<RowSourcePointer> renderedRowsOfTIFF(const std::shared_ptr<const ByteReader>& reader,
                                            std::shared_ptr<const TIFFPage> page);

} // namespace kestrine
