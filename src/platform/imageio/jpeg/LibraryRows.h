// LibraryRows: the rows of any JPEG file, decoded by libjpeg-turbo. Damaged files are decoded as far as
// possible.
#pragma once

#include "platform/coregraphics/ColorConversion.h"
#include "platform/coregraphics/RowSource.h"
#include "platform/imageio/DamageRecord.h"
#include "platform/imageio/jpeg/LibraryReader.h"

namespace kestrine::jpeg {

/// Starts decoding `file`, whose header has been read, at `eighths` (8, 4, 2 or 1) of the full size.
/// `fullFormat` is the format at full size. Invented pixels are recorded in `damage`. `inks` converts the
/// four channels of CMYK pictures to RGB, and is null for all others.
Result<RowSourcePointer> openLibraryRows(std::unique_ptr<LibraryReader> file, const RowFormat& fullFormat,
                                         int eighths, std::shared_ptr<DamageRecord> damage,
                                         std::unique_ptr<ForeignConverter> inks = nullptr);

/// Reads the header first.
Result<RowSourcePointer> openLibraryRows(std::shared_ptr<const ByteReader> reader,
                                         const RowFormat& fullFormat, int eighths,
                                         std::shared_ptr<DamageRecord> damage,
                                         std::unique_ptr<ForeignConverter> inks = nullptr);

} // namespace kestrine::jpeg
