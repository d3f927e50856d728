// The rows of a TIFF page as they are delivered.
#pragma once

#include "platform/imageio/TIFFPage.h"

namespace kestrine {

Result<RowSourcePointer> rowsOfTIFF(const std::shared_ptr<const ByteReader>& reader,
                                    std::shared_ptr<const TIFFPage> page);

} // namespace kestrine
