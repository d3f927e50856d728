// Container: adds metadata to a WebP file.
#pragma once

#include "platform/coregraphics/RowFormat.h"
#include "platform/host/Bytes.h"

namespace kestrine::webp {

/// `file`, a still picture as the library writes it, with a profile and an EXIF block; each may be empty.
Bytes withMetadata(ByteView file, const RowFormat& format, ByteView profile, ByteView exif);

} // namespace kestrine::webp
