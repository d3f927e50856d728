#include "platform/imageio/jpeg/kernels/YCbCrToRGB_reference.h"

#include <algorithm>

namespace kestrine::kernels::reference {

namespace {

constexpr int fractionBits = 16;

consteval int fixed(double value) { return static_cast<int>(value * (1 << fractionBits) + 0.5); }

int rounded(int value) { return (value + (1 << (fractionBits - 1))) >> fractionBits; }

std::uint8_t held(int value) { return static_cast<std::uint8_t>(std::clamp(value, 0, 255)); }

} // namespace

void convertYCbCrToRGB(const std::uint8_t* y, const std::uint8_t* cb, const std::uint8_t* cr,
                       std::size_t width, std::uint8_t* rgb) {
    for (std::size_t i = 0; i < width; ++i) {
        const int u = cb[i] - 128, v = cr[i] - 128;
        rgb[3 * i] = held(y[i] + rounded(fixed(1.40200) * v));
        rgb[3 * i + 1] = held(y[i] + rounded(-fixed(0.34414) * u - fixed(0.71414) * v));
        rgb[3 * i + 2] = held(y[i] + rounded(fixed(1.77200) * u));
    }
}

} // namespace kestrine::kernels::reference
