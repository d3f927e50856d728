#include "platform/coregraphics/Premultiplication.h"

#include <algorithm>

namespace kestrine {

namespace {

template <class Sample>
void divideByAlpha(std::size_t channels, std::span<Sample> samples) {
    constexpr std::uint64_t full = static_cast<Sample>(~Sample{0});
    for (std::size_t i = 0; i + channels <= samples.size(); i += channels)
        if (const std::uint64_t alpha = samples[i + channels - 1]; alpha != 0)
            for (std::size_t c = 0; c + 1 < channels; ++c)
                samples[i + c] =
                    static_cast<Sample>(std::min(full, (samples[i + c] * full + alpha / 2) / alpha));
}

} // namespace

void undoPremultiplication(const RowFormat& format, std::span<std::uint8_t> pixels) {
    if (format.depth == SampleDepth::bits8)
        return divideByAlpha(format.channels(), pixels);
    divideByAlpha(format.channels(),
                  std::span(reinterpret_cast<std::uint16_t*>(pixels.data()), pixels.size() / 2));
}

} // namespace kestrine
