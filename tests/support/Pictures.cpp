#include "tests/support/Pictures.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace kestrine::testing {

namespace {

void setSample(PixelBuffer& picture, std::uint32_t x, std::uint32_t y, std::size_t channel, unsigned value) {
    const std::size_t index = x * picture.format.channels() + channel;
    if (picture.format.depth == SampleDepth::bits8) {
        picture.row(y)[index] = static_cast<std::uint8_t>(value);
    } else {
        const auto wide = static_cast<std::uint16_t>(value);
        std::memcpy(picture.row(y).data() + 2 * index, &wide, 2);
    }
}

} // namespace

PixelBuffer makePicture(const RowFormat& format,
                        const std::function<unsigned(std::uint32_t, std::uint32_t, std::size_t)>& sample) {
    PixelBuffer picture(format);
    for (std::uint32_t y = 0; y < format.height; ++y)
        for (std::uint32_t x = 0; x < format.width; ++x)
            for (std::size_t c = 0; c < format.channels(); ++c)
                setSample(picture, x, y, c, sample(x, y, c));
    return picture;
}

PixelBuffer makePhoto(const RowFormat& format) {
    const double full = format.depth == SampleDepth::bits8 ? 255 : 65535;
    return makePicture(format, [&](std::uint32_t x, std::uint32_t y, std::size_t channel) {
        const double u = (x + 0.5) / format.width, v = (y + 0.5) / format.height;
        const double base = 0.5 + 0.35 * std::sin(2.1 * u * (1 + static_cast<double>(channel)) + 3.3 * v);
        const double texture =
            0.06 * std::sin(0.9 * x + 0.3 * static_cast<double>(channel)) * std::cos(0.7 * y);
        return static_cast<unsigned>(std::lround(full * std::clamp(base + texture, 0.0, 1.0)));
    });
}

unsigned sampleAt(const PixelBuffer& picture, std::uint32_t x, std::uint32_t y, std::size_t channel) {
    const std::size_t index = x * picture.format.channels() + channel;
    if (picture.format.depth == SampleDepth::bits8)
        return picture.row(y)[index];
    std::uint16_t wide = 0;
    std::memcpy(&wide, picture.row(y).data() + 2 * index, 2);
    return wide;
}

::testing::AssertionResult samePicture(const PixelBuffer& actual, const PixelBuffer& expected,
                                       unsigned tolerance) {
    const auto describe = [](const RowFormat& f) {
        return std::to_string(f.width) + "x" + std::to_string(f.height) + " of "
               + std::to_string(f.channels()) + " channels, " + std::to_string(8 * f.bytesPerSample())
               + " bits";
    };
    if (!(actual.format == expected.format))
        return ::testing::AssertionFailure()
               << "it is " << describe(actual.format) << ", not " << describe(expected.format);
    unsigned largest = 0;
    std::string first;
    for (std::uint32_t y = 0; y < actual.format.height; ++y)
        for (std::uint32_t x = 0; x < actual.format.width; ++x)
            for (std::size_t c = 0; c < actual.format.channels(); ++c) {
                const unsigned a = sampleAt(actual, x, y, c), e = sampleAt(expected, x, y, c);
                const unsigned difference = a > e ? a - e : e - a;
                if (difference > tolerance && first.empty())
                    first = "x " + std::to_string(x) + ", y " + std::to_string(y) + ", channel "
                            + std::to_string(c) + ": " + std::to_string(a) + " instead of "
                            + std::to_string(e);
                largest = std::max(largest, difference);
            }
    if (first.empty())
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure()
           << "first difference at " << first << "; largest difference " << largest;
}

} // namespace kestrine::testing
