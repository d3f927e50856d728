#include "platform/imageio/GIFDither.h"

#include <algorithm>

namespace kestrine {

namespace {

/// Where the palette has nothing like the picture's colour, errors would pile up and spoil what lies beside.
constexpr int largestError = 32;

constexpr int levelsOf(int sixteenths) { return (sixteenths + 8) >> 4; }

constexpr int carriedLevels(int sixteenths) {
    return std::clamp(levelsOf(sixteenths), -largestError, largestError);
}

constexpr std::uint8_t clampedLevel(int level) {
    return static_cast<std::uint8_t>(std::clamp(level, 0, 255));
}

} // namespace

void GIFTransparencyDither::decide(std::span<const std::uint8_t> alpha, GIFPixel* row) {
    diffusion_.visitRow([&](std::size_t x, int received) {
        if (alpha[x] == 0 || alpha[x] == 255) {
            row[x].cover = alpha[x] == 0 ? GIFCover::absent : GIFCover::opaque;
            return 0;
        }
        const int wanted = alpha[x] + levelsOf(received);
        row[x].cover = wanted < 128 ? GIFCover::hole : GIFCover::opaque;
        return wanted - (wanted < 128 ? 0 : 255);
    });
}

GIFColorDither::GIFColorDither(const GIFPalette& palette, std::uint32_t width)
    : palette_(palette), nearest_(palette.colors, palette.transparent), diffusion_(width) {}

/// A hole passes on what it received, so that dithered areas with holes keep their colour, too.
void GIFColorDither::place(const GIFPixel* row, std::span<std::uint8_t> indices) {
    const GIFColor* const colors = palette_.colors.data();
    diffusion_.visitRow([&](std::size_t x, const Error& received) -> Error {
        const Error carried{carriedLevels(received.red), carriedLevels(received.green),
                            carriedLevels(received.blue)};
        const GIFPixel pixel = row[x];
        if (pixel.cover != GIFCover::opaque) {
            indices[x] = *palette_.transparent;
            return pixel.cover == GIFCover::hole ? carried : Error{};
        }
        const GIFColor wanted{clampedLevel(pixel.color.red + carried.red),
                              clampedLevel(pixel.color.green + carried.green),
                              clampedLevel(pixel.color.blue + carried.blue)};
        const std::uint8_t index = nearest_.indexOf(wanted);
        indices[x] = index;
        const GIFColor given = colors[index];
        return {wanted.red - given.red, wanted.green - given.green, wanted.blue - given.blue};
    });
}

} // namespace kestrine
