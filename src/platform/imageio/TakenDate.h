// takenDateOf: when a picture was taken, for pictures of every format with EXIF data.
#pragma once

#include "platform/imageio/Picture.h"

namespace kestrine {

/// A FileQuestion. The date as the camera wrote it, in its local time: "2024:06:01 18:30:05". Empty if the
/// file has none.
Result<Bytes> takenDateOf(const std::shared_ptr<const ByteReader>& file);

} // namespace kestrine
