#include "platform/imageio/Codecs.h"

#include <array>

namespace kestrine {

namespace {

/// Every signature is exact, so the order matters only for speed: what people convert most comes first.
constexpr std::array<const ImageCodec*, 7> codecs = {&jpegCodec, &pngCodec, &tiffCodec, &gifCodec,
                                                     &webpCodec, &bmpCodec, &pnmCodec};

double plausible(double dotsPerInch) { return dotsPerInch >= 1 && dotsPerInch <= 100'000 ? dotsPerInch : 72; }

} // namespace

Resolution plausibleResolution(double horizontal, double vertical) {
    return {plausible(horizontal), plausible(vertical)};
}

Result<std::unique_ptr<ImageDecoder>> openImage(std::shared_ptr<const ByteReader> reader) {
    std::array<std::uint8_t, 64> buffer{};
    const ByteView head(buffer.data(), reader->readAt(0, buffer));
    for (const ImageCodec* codec : codecs)
        if (codec->recognises(head))
            return codec->open(std::move(reader));
    return Failure{Reason::unsupported, "the file is in no picture format that is known here"};
}

} // namespace kestrine
