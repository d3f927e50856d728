// Rows from the general JPEG library, which reads whatever there is: any way of storing, damaged files as far
// as they go.
#pragma once

#include "platform/coregraphics/ColorConversion.h"
#include "platform/coregraphics/RowSource.h"
#include "platform/host/files/ByteReader.h"
#include "platform/imageio/DamageRecord.h"

namespace kestrine::jpeg {

/// Starts decoding to `eighths` (8, 4, 2 or 1). `fullFormat` is that of the whole picture. `damage` learns
/// when pixels are made up. A picture of four inks needs `inks`, which turns them into RGB; for all others it
/// is null.
Result<RowSourcePointer> openLibraryRows(std::shared_ptr<const ByteReader> reader,
                                         const RowFormat& fullFormat, int eighths,
                                         std::shared_ptr<DamageRecord> damage,
                                         std::unique_ptr<ForeignConverter> inks = nullptr);

} // namespace kestrine::jpeg
