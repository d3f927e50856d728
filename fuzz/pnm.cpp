// Takes any bytes through the PNM decoder, all that an engine would ask of it.
#include "platform/coregraphics/PixelBuffer.h"
#include "platform/imageio/Codecs.h"

#include <algorithm>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace kestrine;
    if (!pnmCodec.recognises(ByteView(data, std::min<std::size_t>(size, 64))))
        return 0;
    auto decoder = pnmCodec.open(readerOfBytes(Bytes(data, data + size)));
    if (!decoder)
        return 0;
    constexpr std::uint64_t affordablePixels = 1 << 20;
    if ((*decoder)->frames()[0].format.pixels() > affordablePixels)
        return 0;
    if (auto rows = (*decoder)->rows(0, 8))
        (void)readAllRows(**rows);
    return 0;
}
