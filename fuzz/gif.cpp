// Decodes any bytes as a GIF. A decoded opaque picture has at most 256 colours, so encoding and decoding it
// again must not change it.
#include "platform/coregraphics/PixelBuffer.h"
#include "platform/imageio/Codecs.h"

#include <algorithm>
#include <cstdlib>

namespace {

using namespace kestrine;

/// The sides of a GIF have 16 bits.
bool isSmall(const RowFormat& format) {
    return !format.hasAlpha && format.width < 65536 && format.height < 65536;
}

void tryAgain(const PixelBuffer& picture) {
    auto file = encoded(gif::encode, *rowsOfPixels(std::make_shared<PixelBuffer>(picture)), {});
    auto decoder = gif::codec.open(readerOfBytes(std::move(*file)));
    auto rows = (*decoder)->rows(0, 0);
    if (readAllRows(**rows)->bytes != picture.bytes)
        std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (!gif::codec.recognises(ByteView(data, std::min<std::size_t>(size, 64))))
        return 0;
    auto decoder = gif::codec.open(readerOfBytes(Bytes(data, data + size)));
    if (!decoder)
        return 0;
    constexpr std::uint64_t affordablePixels = 1 << 16;
    if ((*decoder)->frames()[0].format.pixels() > affordablePixels)
        return 0;
    if (auto rows = (*decoder)->rows(0, 0))
        if (auto picture = readAllRows(**rows); picture && isSmall(picture->format))
            tryAgain(*picture);
    (void)(*decoder)->colorTable();
    return 0;
}
