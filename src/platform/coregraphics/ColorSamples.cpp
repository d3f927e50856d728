#include "platform/coregraphics/ColorManagement.h"
#include "platform/coregraphics/RowStages.h"

namespace kestrine {

namespace {

/// The 16-bit samples of an sRGB colour in another RGB space; unchanged if the profile cannot be used.
ColorSamples inSpaceOf(const ColorProfile& profile, const ColorSamples& color) {
    const cmsUInt32Number samples = pixelFormat(PT_RGB, 3, SampleDepth::bits16, false);
    const auto transform = TransformIntoRGB::ofProfile(ColorProfile::sRGB().bytes(), cmsSigRgbData, samples,
                                                       samples, cmsFLAGS_NOOPTIMIZE, profile);
    ColorSamples converted = color;
    if (transform != nullptr)
        transform->convert(reinterpret_cast<const std::uint8_t*>(color.data()),
                           reinterpret_cast<std::uint8_t*>(converted.data()), 1);
    return converted;
}

} // namespace

ColorSamples samplesOf(const RGBColor& color, const RowFormat& format, const ColorProfile* profile) {
    constexpr unsigned to16Bits = 257;
    ColorSamples samples = {static_cast<std::uint16_t>(color.red * to16Bits),
                            static_cast<std::uint16_t>(color.green * to16Bits),
                            static_cast<std::uint16_t>(color.blue * to16Bits)};
    if (profile != nullptr && format.model == ColorModel::rgb && color != white)
        samples = inSpaceOf(*profile, samples);
    if (format.depth == SampleDepth::bits8)
        for (std::uint16_t& sample : samples)
            sample = static_cast<std::uint16_t>((sample + to16Bits / 2) / to16Bits);
    return samples;
}

} // namespace kestrine
