#include "platform/coregraphics/Premultiplication.h"

#include <algorithm>
#include <limits>

namespace kestrine {

namespace {

template <class Sample>
void divideByAlpha(std::size_t channels, std::span<Sample> samples) {
    constexpr std::uint64_t maximum = std::numeric_limits<Sample>::max();
    for (std::size_t at = 0; at + channels <= samples.size(); at += channels) {
        const std::uint64_t alpha = samples[at + channels - 1];
        if (alpha == maximum)
            continue;
        for (Sample& color : samples.subspan(at, channels - 1))
            color = alpha == 0
                        ? Sample{0}
                        : static_cast<Sample>(std::min(maximum, (color * maximum + alpha / 2) / alpha));
    }
}

} // namespace

void undoPremultiplication(std::size_t channels, std::span<std::uint8_t> samples) {
    divideByAlpha(channels, samples);
}

void undoPremultiplication(std::size_t channels, std::span<std::uint16_t> samples) {
    divideByAlpha(channels, samples);
}

void undoPremultiplication(const RowFormat& format, std::span<std::uint8_t> pixels) {
    if (format.depth == SampleDepth::bits8)
        divideByAlpha(format.channels(), pixels);
    else
        divideByAlpha(format.channels(),
                      std::span(reinterpret_cast<std::uint16_t*>(pixels.data()), pixels.size() / 2));
}

} // namespace kestrine
