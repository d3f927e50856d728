#include "platform/imageio/AlphaDivision.h"

#include <algorithm>
#include <limits>

namespace kestrine {

namespace {

template <class Sample>
void divideColors(std::span<Sample> pixels, std::size_t channels) {
    constexpr std::uint64_t maximum = std::numeric_limits<Sample>::max();
    for (std::size_t at = 0; at < pixels.size(); at += channels) {
        const std::uint32_t alpha = pixels[at + channels - 1];
        for (std::size_t i = at; i < at + channels - 1; ++i) {
            const std::uint64_t color = pixels[i] * maximum;
            pixels[i] =
                alpha == 0 ? Sample{0} : static_cast<Sample>(std::min((color + alpha / 2) / alpha, maximum));
        }
    }
}

} // namespace

void divideByAlpha(std::span<std::uint8_t> pixels, std::size_t channels) { divideColors(pixels, channels); }
void divideByAlpha(std::span<std::uint16_t> pixels, std::size_t channels) { divideColors(pixels, channels); }

} // namespace kestrine
