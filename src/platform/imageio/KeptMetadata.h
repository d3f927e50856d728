// Whether a file has more metadata than a result of it would have.
#pragma once

#include "platform/imageio/Picture.h"
#include "platform/imageio/exif/CarriedExif.h"

#include <optional>

namespace kestrine {

/// A FileQuestion about what a file holds besides its pixels, their profile and their resolution. The answer
/// is for holdsNoMoreThan().
Result<Bytes> metadataOf(const std::shared_ptr<const ByteReader>& file);

/// Whether a file with this answer holds nothing that a result with `selection` would lose; nullopt stands
/// for a result without EXIF data. Not for ExifSelection::all, which permits everything. Files of formats
/// other than JPEG and PNG are taken to hold more.
bool holdsNoMoreThan(const std::optional<ExifSelection>& selection, ByteView answer);

} // namespace kestrine
