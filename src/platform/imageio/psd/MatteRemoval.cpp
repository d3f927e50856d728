#include "platform/imageio/psd/MatteRemoval.h"

#include <algorithm>
#include <limits>

namespace kestrine::psd {

namespace {

template <class Sample>
void removeWhiteFrom(std::span<Sample> pixels, std::size_t channels, bool isLab) {
    constexpr std::int64_t maximum = std::numeric_limits<Sample>::max();
    for (std::size_t at = 0; at < pixels.size(); at += channels) {
        const std::int64_t alpha = pixels[at + channels - 1];
        if (alpha == 0 || alpha == maximum)
            continue;
        for (std::size_t channel = 0; channel + 1 < channels; ++channel) {
            const std::int64_t white = isLab && channel > 0 ? maximum / 2 + 1 : maximum;
            const std::int64_t difference = (pixels[at + channel] - white) * maximum;
            const std::int64_t half = difference < 0 ? -alpha / 2 : alpha / 2; // rounds to the nearest
            pixels[at + channel] = static_cast<Sample>(
                std::clamp<std::int64_t>(white + (difference + half) / alpha, 0, maximum));
        }
    }
}

} // namespace

void removeWhite(std::span<std::uint8_t> pixels, std::size_t channels, bool isLab) {
    removeWhiteFrom(pixels, channels, isLab);
}

void removeWhite(std::span<std::uint16_t> pixels, std::size_t channels, bool isLab) {
    removeWhiteFrom(pixels, channels, isLab);
}

} // namespace kestrine::psd
