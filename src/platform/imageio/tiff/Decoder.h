// Opens TIFF files.
#pragma once

#include "platform/imageio/ImageCodec.h"

namespace kestrine::tiff {

/// Opens the pages of a camera raw file that are pictures as large as the sensor's. Fails with reason
/// "unsupported" if there are none. `codec` of Codecs.h opens all other TIFF files, and leaves these to
/// raw::codec.
Result<std::unique_ptr<ImageDecoder>> openDevelopedPages(std::shared_ptr<const ByteReader> reader);

} // namespace kestrine::tiff
