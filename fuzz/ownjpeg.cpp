// Compares our own JPEG decoder with libjpeg-turbo: at every scale, both give the same rows or both fail.
#include "fuzz/DecodeEverything.h"
#include "platform/imageio/jpeg/Decoder.h"

#include <cstdlib>

namespace {

using namespace kestrine;

/// All rows; empty on failure and for pictures that would take too long.
Bytes decoded(const Bytes& file, jpeg::DecoderChoice choice, int halvings) {
    constexpr std::uint64_t affordablePixels = 1 << 18;
    const auto decoder = jpeg::openDecoder(readerOfBytes(file), choice);
    if (!decoder || (*decoder)->frames().front().format.pixels() > affordablePixels)
        return {};
    const auto rows = (*decoder)->rows(0, halvings);
    Result<PixelBuffer> pixels = rows ? readAllRows(**rows) : Result<PixelBuffer>(rows.failure());
    return pixels ? std::move(pixels->bytes) : Bytes();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const Bytes file(data, data + size);
    if (!kestrine::jpeg::codec.recognises(kestrine::ByteView(file).first(std::min<std::size_t>(size, 64))))
        return 0;
    for (const int halvings : {0, 1, 2, 3}) {
        if (decoded(file, jpeg::DecoderChoice::ownFirst, halvings)
            != decoded(file, jpeg::DecoderChoice::libraryOnly, halvings))
            std::abort();
    }
    return 0;
}
