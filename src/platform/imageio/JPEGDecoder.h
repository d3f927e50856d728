// Reads JPEG: baseline and progressive, grey, colour and CMYK, at full size or reduced in the transform. What
// cameras write goes through our own decoder (jpeg/), twice as fast; all else, and whatever that meets odd,
// through the general library.
#pragma once

#include "platform/imageio/ImageCodec.h"

namespace kestrine {

/// The same codec as jpegCodec, all through the general library: the oracle for our own decoder.
extern const ImageCodec libraryJPEGCodec;

} // namespace kestrine
