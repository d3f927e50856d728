#include "kestrinectl/compare/LumaPlane.h"

#include <cstring>

namespace kestrine {

namespace {

constexpr float redWeight = 0.299F, greenWeight = 0.587F, blueWeight = 0.114F; // BT.601

/// The sample at `position`, as 0 to 255.
template <class Sample>
float sampleAt(const std::uint8_t* position) {
    constexpr float scale = sizeof(Sample) == 1 ? 1.0F : 1.0F / 257;
    Sample sample{};
    std::memcpy(&sample, position, sizeof sample);
    return static_cast<float>(sample) * scale;
}

template <class Sample>
LumaPlane lumaOfSamples(const PixelBuffer& pixels) {
    const RowFormat& format = pixels.format;
    LumaPlane plane{format.width, format.height, {}};
    plane.samples.reserve(format.pixels());
    const std::size_t step = format.bytesPerPixel();
    for (const std::uint8_t* pixel = pixels.bytes.data(); plane.samples.size() < format.pixels();
         pixel += step)
        plane.samples.push_back(format.model == ColorModel::gray
                                    ? sampleAt<Sample>(pixel)
                                    : redWeight * sampleAt<Sample>(pixel)
                                          + greenWeight * sampleAt<Sample>(pixel + sizeof(Sample))
                                          + blueWeight * sampleAt<Sample>(pixel + 2 * sizeof(Sample)));
    return plane;
}

} // namespace

LumaPlane lumaOf(const PixelBuffer& pixels) {
    return pixels.format.depth == SampleDepth::bits16 ? lumaOfSamples<std::uint16_t>(pixels)
                                                      : lumaOfSamples<std::uint8_t>(pixels);
}

} // namespace kestrine
