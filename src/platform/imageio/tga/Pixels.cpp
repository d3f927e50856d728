#include "platform/imageio/tga/Pixels.h"

namespace kestrine::tga {

namespace {

/// `value` of 0 to 31 in the range 0 to 255, rounded.
std::uint8_t from5Bits(unsigned value) { return static_cast<std::uint8_t>(((value & 31) * 255 + 15) / 31); }

} // namespace

std::size_t bytesOf(Pixels kind) {
    switch (kind) {
    case Pixels::bits:
    case Pixels::gray:
    case Pixels::index8:
        return 1;
    case Pixels::grayAlpha:
    case Pixels::color16:
    case Pixels::index16:
        return 2;
    case Pixels::color24:
        return 3;
    case Pixels::color32:
        break;
    }
    return 4;
}

void convertPixels(Pixels kind, bool withAlpha, ByteView stored, std::size_t pixels, std::uint8_t* samples) {
    const std::uint8_t* from = stored.data();
    for (std::size_t i = 0; i < pixels; ++i) {
        switch (kind) {
        case Pixels::bits:
            *samples++ = (stored[i / 8] << i % 8 & 0x80) != 0 ? 255 : 0;
            break;
        case Pixels::gray:
            *samples++ = *from++;
            break;
        case Pixels::grayAlpha:
            *samples++ = from[0];
            if (withAlpha)
                *samples++ = from[1];
            from += 2;
            break;
        case Pixels::color16: {
            const unsigned pixel = from[0] | unsigned{from[1]} << 8;
            *samples++ = from5Bits(pixel >> 10);
            *samples++ = from5Bits(pixel >> 5);
            *samples++ = from5Bits(pixel);
            if (withAlpha)
                *samples++ = (pixel & 0x8000) != 0 ? 255 : 0;
            from += 2;
            break;
        }
        case Pixels::color24:
        case Pixels::color32:
            *samples++ = from[2];
            *samples++ = from[1];
            *samples++ = from[0];
            if (withAlpha)
                *samples++ = from[3];
            from += kind == Pixels::color24 ? 3 : 4;
            break;
        case Pixels::index8:
        case Pixels::index16:
            return;
        }
    }
}

} // namespace kestrine::tga
