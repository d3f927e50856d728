// Takes any bytes through the TIFF decoder, all that an engine would ask of it.
#include "platform/coregraphics/PixelBuffer.h"
#include "platform/imageio/Codecs.h"

#include <algorithm>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace kestrine;
    if (!tiffCodec.recognises(ByteView(data, std::min<std::size_t>(size, 64))))
        return 0;
    auto decoder = tiffCodec.open(readerOfBytes(Bytes(data, data + size)));
    if (!decoder)
        return 0;
    for (std::size_t frame = 0; frame < (*decoder)->frames().size(); ++frame) {
        constexpr std::uint64_t affordablePixels = 1 << 20;
        if ((*decoder)->frames()[frame].format.pixels() > affordablePixels)
            continue;
        if (auto rows = (*decoder)->rows(frame, 8))
            (void)readAllRows(**rows);
    }
    (void)(*decoder)->exif();
    (void)(*decoder)->colorTable();
    return 0;
}
