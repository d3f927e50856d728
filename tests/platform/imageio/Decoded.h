// Decoded: the result of decoding a file with one codec.
#pragma once

#include "platform/coregraphics/PixelBuffer.h"
#include "platform/imageio/Codecs.h"

#include <gtest/gtest.h>

namespace kestrine::testing {

struct Decoded {
    std::vector<FrameDescription> frames;
    PixelBuffer pixels; ///< of the requested frame
    Bytes exif, colorTable;
    FileContents contents;
    std::optional<Failure> damage; ///< after all rows

    const FrameDescription& frame() const { return frames.front(); }
};

/// decode() for a file that the codec need not recognise by its first bytes.
inline Result<Decoded> decodeUnseen(const ImageCodec& codec, const Bytes& file, std::size_t frame = 0) {
    Result<std::unique_ptr<ImageDecoder>> decoder = codec.open(readerOfBytes(file));
    if (!decoder)
        return decoder.failure();
    Result<RowSourcePointer> rows = (*decoder)->rows(frame, 0);
    if (!rows)
        return rows.failure();
    Result<PixelBuffer> pixels = readAllRows(**rows);
    if (!pixels)
        return pixels.failure();
    return Decoded{(*decoder)->frames(),      std::move(*pixels),     *(*decoder)->exif(),
                   *(*decoder)->colorTable(), (*decoder)->contents(), (*decoder)->damage()};
}

/// All metadata that `codec` finds in `file`, and the pixels of one frame; or the first failure.
inline Result<Decoded> decode(const ImageCodec& codec, const Bytes& file, std::size_t frame = 0) {
    if (!codec.recognises(ByteView(file).first(std::min(maxHeadBytes, file.size()))))
        return Failure{Reason::unsupported, "not recognised"};
    return decodeUnseen(codec, file, frame);
}

/// decode() for files that must be readable.
inline Decoded decodeSound(const ImageCodec& codec, const Bytes& file, std::size_t frame = 0) {
    Result<Decoded> decoded = decode(codec, file, frame);
    if (!decoded) {
        ADD_FAILURE() << "not decoded: " << decoded.failure().text;
        return {{FrameDescription{}}, {}, {}, {}, {}, {}};
    }
    return std::move(*decoded);
}

/// Whether decoding fails at any step.
inline bool failsToDecode(const ImageCodec& codec, const Bytes& file) { return !decode(codec, file).ok(); }

/// Whether decoding fails or reports that pixels are lost.
inline bool isRefusedOrDamaged(const ImageCodec& codec, const Bytes& file) {
    const Result<Decoded> decoded = decodeUnseen(codec, file);
    return !decoded || decoded->damage;
}

/// The file that an encoder makes of a picture. If that fails, the test fails and the result is empty.
inline Bytes encodeSound(Encoder encode, const PixelBuffer& picture, const EncodingOptions& options = {}) {
    Result<Bytes> file = encoded(encode, *rowsOfPixels(std::make_shared<PixelBuffer>(picture)), options);
    if (!file) {
        ADD_FAILURE() << "not encoded: " << file.failure().text;
        return {};
    }
    return std::move(*file);
}

/// All layouts of pixels.
inline std::vector<RowFormat> allLayouts(std::uint32_t width, std::uint32_t height) {
    std::vector<RowFormat> layouts;
    for (const ColorModel model : {ColorModel::gray, ColorModel::rgb})
        for (const bool hasAlpha : {false, true})
            for (const SampleDepth depth : {SampleDepth::bits8, SampleDepth::bits16})
                layouts.push_back({width, height, model, hasAlpha, depth});
    return layouts;
}

} // namespace kestrine::testing
