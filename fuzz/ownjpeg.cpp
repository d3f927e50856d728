// Our own JPEG decoder against the general library: any bytes, at any scale, give the same rows or fail
// alike.
#include "fuzz/DecodeEverything.h"
#include "platform/imageio/jpeg/LibraryOnlyScope.h"

#include <cstdlib>

namespace {

using namespace kestrine;

/// All rows; empty when there are none. A picture too large to try is none.
Bytes decoded(const Bytes& file, int eighths) {
    constexpr std::uint64_t affordablePixels = 1 << 18;
    const auto decoder = jpeg::codec.open(readerOfBytes(file));
    if (!decoder || (*decoder)->frames().front().format.pixels() > affordablePixels)
        return {};
    const auto rows = (*decoder)->rows(0, eighths);
    Result<PixelBuffer> pixels = rows ? readAllRows(**rows) : Result<PixelBuffer>(rows.failure());
    return pixels ? std::move(pixels->bytes) : Bytes();
}

Bytes decodedByLibrary(const Bytes& file, int eighths) {
    const jpeg::LibraryOnlyScope scope;
    return decoded(file, eighths);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const Bytes file(data, data + size);
    if (!kestrine::jpeg::codec.recognises(kestrine::ByteView(file).first(std::min<std::size_t>(size, 64))))
        return 0;
    for (const int eighths : {8, 4, 2, 1}) {
        if (decoded(file, eighths) != decodedByLibrary(file, eighths))
            std::abort();
    }
    return 0;
}
