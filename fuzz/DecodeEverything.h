// DecodeEverything: shared by the fuzzers of the picture formats.
#pragma once

#include "platform/coregraphics/ColorConversion.h"
#include "platform/coregraphics/PixelBuffer.h"
#include "platform/coregraphics/RowStages.h"
#include "platform/imageio/Codecs.h"
#include "platform/imageio/OutputFormats.h"

#include <algorithm>
#include <fcntl.h>
#include <unistd.h>

namespace kestrine::fuzzing {

/// Passes bytes to the system, so that a memory checker reports those that were never written.
inline void useBytes(ByteView bytes) {
    static const int nowhere = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
    [[maybe_unused]] const auto written = ::write(nowhere, bytes.data(), bytes.size());
}

/// Encodes small pictures in every format.
inline void encodeEverything(PixelBuffer pixels) {
    constexpr std::uint64_t smallPicture = 4096;
    if (pixels.format.pixels() > smallPicture)
        return;
    const auto shared = std::make_shared<const PixelBuffer>(std::move(pixels));
    for (const OutputFormat& format : outputFormats()) {
        RowSourcePointer rows = rowsOfPixels(shared);
        if (!format.holds16Bits)
            rows = rowsOf8Bits(std::move(rows));
        if (!format.holdsAlpha)
            rows = rowsOnWhite(std::move(rows));
        if (!format.holdsGray && rows->format().model == ColorModel::gray)
            rows = rowsInSRGB(std::move(rows), nullptr);
        if (const Result<Bytes> file = encoded(format.encode, *rows, {.quality = 0.7}))
            useBytes(*file);
    }
}

/// Decodes a frame at one size, and uses what comes out.
inline void decodeFrame(const ImageDecoder& decoder, std::size_t frame, int halvings) {
    Result<RowSourcePointer> rows = decoder.rows(frame, halvings);
    Result<PixelBuffer> pixels = rows ? readAllRows(**rows) : rows.failure();
    if (!pixels)
        return;
    useBytes(pixels->bytes);
    if (halvings == 0)
        encodeEverything(*std::move(pixels));
}

/// Calls all functions of a decoder: metadata, and all frames of at most `affordablePixels` at all sizes.
inline void useDecoder(const ImageDecoder& decoder, std::uint64_t affordablePixels) {
    for (std::size_t frame = 0; frame < decoder.frames().size(); ++frame) {
        const FrameDescription& description = decoder.frames()[frame];
        for (int halvings = 0; halvings <= description.maxHalvings; ++halvings)
            if (description.format.pixels() <= affordablePixels)
                decodeFrame(decoder, frame, halvings);
        if (description.isDrawn)
            if (auto rows = decoder.drawnRows(frame, {40.0 / description.format.width, 0.5, 39},
                                              {30.0 / description.format.height, 0, 30}))
                if (const Result<PixelBuffer> pixels = readAllRows(**rows))
                    useBytes(pixels->bytes);
    }
    (void)decoder.contents();
    for (const Result<Bytes>& property : {decoder.exif(), decoder.colorTable()})
        if (property)
            useBytes(*property);
}

/// Opens the bytes with a codec that recognises them, and uses its decoder.
inline void decodeEverything(const ImageCodec& codec, const std::uint8_t* data, std::size_t size,
                             std::uint64_t affordablePixels = 1 << 20) {
    if (!codec.recognises(ByteView(data, std::min(size, maxHeadBytes))))
        return;
    auto decoder = codec.open(readerOfBytes(Bytes(data, data + size)));
    if (!decoder && decoder.failure().reason == Reason::otherFormat)
        decoder = codec.other->open(readerOfBytes(Bytes(data, data + size)));
    if (decoder)
        useDecoder(**decoder, affordablePixels);
}

} // namespace kestrine::fuzzing
