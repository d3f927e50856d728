// DecodeEverything: shared by the fuzzers of the picture formats.
#pragma once

#include "platform/coregraphics/PixelBuffer.h"
#include "platform/imageio/Codecs.h"

#include <algorithm>

namespace kestrine::fuzzing {

/// Calls all functions of a codec and its decoder: header, metadata, and all frames of at most
/// `affordablePixels`.
inline void decodeEverything(const ImageCodec& codec, const std::uint8_t* data, std::size_t size,
                             std::uint64_t affordablePixels = 1 << 20) {
    if (!codec.recognises(ByteView(data, std::min<std::size_t>(size, 64))))
        return;
    auto decoder = codec.open(readerOfBytes(Bytes(data, data + size)));
    if (!decoder)
        return;
    for (std::size_t frame = 0; frame < (*decoder)->frames().size(); ++frame) {
        if ((*decoder)->frames()[frame].format.pixels() > affordablePixels)
            continue;
        if (auto rows = (*decoder)->rows(frame, 8))
            (void)readAllRows(**rows);
    }
    (void)(*decoder)->exif();
    (void)(*decoder)->colorTable();
}

} // namespace kestrine::fuzzing
