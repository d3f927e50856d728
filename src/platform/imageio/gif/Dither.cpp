#include "platform/imageio/gif/Dither.h"

#include <algorithm>

namespace kestrine::gif {

namespace {

/// Limits the error that is passed on. Otherwise errors would add up where the palette has no similar colour,
/// and spoil the pixels next to it.
constexpr int maxError = 32;

constexpr int levelsOf(int sixteenths) { return (sixteenths + 8) >> 4; }

constexpr int carriedLevels(int sixteenths) { return std::clamp(levelsOf(sixteenths), -maxError, maxError); }

constexpr std::uint8_t clampedLevel(int level) {
    return static_cast<std::uint8_t>(std::clamp(level, 0, 255));
}

} // namespace

void TransparencyDither::decide(std::span<const std::uint8_t> alpha, Pixel* row) {
    diffusion_.visitRow([&](std::size_t x, int received) {
        if (alpha[x] == 0 || alpha[x] == 255) {
            row[x].cover = alpha[x] == 0 ? Cover::absent : Cover::opaque;
            return 0;
        }
        const int wanted = alpha[x] + levelsOf(received);
        row[x].cover = wanted < 128 ? Cover::hole : Cover::opaque;
        return wanted - (wanted < 128 ? 0 : 255);
    });
}

ColorDither::ColorDither(const Palette& palette, std::uint32_t width)
    : palette_(palette), nearest_(palette.colors, palette.transparent), diffusion_(width) {}

/// A hole passes on the error that it received, so that areas with holes keep their colour.
void ColorDither::place(const Pixel* row, std::span<std::uint8_t> indices) {
    const Color* const colors = palette_.colors.data();
    diffusion_.visitRow([&](std::size_t x, const Error& received) -> Error {
        const Error carried{carriedLevels(received.red), carriedLevels(received.green),
                            carriedLevels(received.blue)};
        const Pixel pixel = row[x];
        if (pixel.cover != Cover::opaque) {
            indices[x] = *palette_.transparent;
            return pixel.cover == Cover::hole ? carried : Error{};
        }
        const Color wanted{clampedLevel(pixel.color.red + carried.red),
                           clampedLevel(pixel.color.green + carried.green),
                           clampedLevel(pixel.color.blue + carried.blue)};
        const std::uint8_t index = nearest_.indexOf(wanted);
        indices[x] = index;
        const Color given = colors[index];
        return {wanted.red - given.red, wanted.green - given.green, wanted.blue - given.blue};
    });
}

} // namespace kestrine::gif
