// Opens JPEG files: baseline and progressive, grey, colour and CMYK, at full size or reduced in the
// transform.
#pragma once

#include "platform/imageio/ImageCodec.h"

namespace kestrine::jpeg {

/// Which decoder decodes the pixels. The pixels are the same with both.
enum class DecoderChoice {
    ownFirst,    ///< our own decoder (own/), which is about twice as fast; libjpeg-turbo for what it refuses
    libraryOnly, ///< libjpeg-turbo alone; tests, fuzzers and benchmarks compare with it
};

/// Reads the header of a JPEG file. `codec` of Codecs.h opens files with `ownFirst`. A build without our own
/// decoder (KESTRINE_OWN_JPEG_DECODER=OFF) treats both choices alike.
Result<std::unique_ptr<ImageDecoder>> openDecoder(std::shared_ptr<const ByteReader> reader,
                                                  DecoderChoice choice);

} // namespace kestrine::jpeg
