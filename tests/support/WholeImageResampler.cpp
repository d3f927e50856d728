#include "tests/support/WholeImageResampler.h"

#include "tests/support/Pictures.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace kestrine::testing {

namespace {

/// A picture of doubles with interleaved channels.
struct Plane {
    std::size_t width, height, channels;
    std::vector<double> values;

    double& at(std::size_t x, std::size_t y, std::size_t c) { return values[(y * width + x) * channels + c]; }
};

double kernel(ResampleFilter filter, double x) {
    x = std::abs(x);
    if (filter == ResampleFilter::triangle)
        return std::max(0.0, 1 - x);
    if (x >= 3)
        return 0;
    if (x == 0)
        return 1;
    const double p = std::numbers::pi * x;
    return 3 * std::sin(p) * std::sin(p / 3) / (p * p);
}

/// The weights of all source pixels for result pixel i.
std::vector<double> weightsOf(ResampleFilter filter, const AxisMap& map, std::size_t sourceSize,
                              std::uint32_t i) {
    const double stretch = std::max(1.0, 1 / map.scale);
    std::vector<double> weights(sourceSize);
    double sum = 0;
    for (std::size_t j = 0; j < sourceSize; ++j)
        sum += weights[j] = kernel(filter, (static_cast<double>(j) + 0.5 - map.centre(i)) / stretch);
    for (double& weight : weights)
        weight /= sum;
    return weights;
}

Plane toPlane(const PixelBuffer& source, Light light, const ToneCurve& curve) {
    const RowFormat& f = source.format;
    const double full = f.depth == SampleDepth::bits8 ? 255 : 65535;
    Plane plane{f.width, f.height, f.channels(), std::vector<double>(f.pixels() * f.channels())};
    for (std::uint32_t y = 0; y < f.height; ++y)
        for (std::uint32_t x = 0; x < f.width; ++x) {
            const double alpha = f.hasAlpha ? sampleAt(source, x, y, f.colorChannels()) / full : 1;
            for (std::size_t c = 0; c < f.colorChannels(); ++c) {
                const double stored = sampleAt(source, x, y, c) / full;
                plane.at(x, y, c) = alpha * (light == Light::linear ? curve.light(stored) : stored);
            }
            if (f.hasAlpha)
                plane.at(x, y, f.colorChannels()) = alpha;
        }
    return plane;
}

Plane horizontally(Plane& in, const AxisMap& map, ResampleFilter filter) {
    Plane out{map.outSize, in.height, in.channels,
              std::vector<double>(map.outSize * in.height * in.channels)};
    for (std::uint32_t i = 0; i < map.outSize; ++i) {
        const std::vector<double> weights = weightsOf(filter, map, in.width, i);
        for (std::size_t y = 0; y < in.height; ++y)
            for (std::size_t c = 0; c < in.channels; ++c)
                for (std::size_t j = 0; j < in.width; ++j)
                    out.at(i, y, c) += weights[j] * in.at(j, y, c);
    }
    return out;
}

Plane vertically(Plane& in, const AxisMap& map, ResampleFilter filter) {
    Plane out{in.width, map.outSize, in.channels, std::vector<double>(map.outSize * in.width * in.channels)};
    for (std::uint32_t i = 0; i < map.outSize; ++i) {
        const std::vector<double> weights = weightsOf(filter, map, in.height, i);
        for (std::size_t j = 0; j < in.height; ++j)
            for (std::size_t x = 0; x < in.width; ++x)
                for (std::size_t c = 0; c < in.channels; ++c)
                    out.at(x, i, c) += weights[j] * in.at(x, j, c);
    }
    return out;
}

} // namespace

PixelBuffer resampledWhole(const PixelBuffer& source, const Resampling& resampling, const ToneCurve& curve,
                           SampleDepth outDepth) {
    Plane plane = toPlane(source, resampling.light, curve);
    plane = vertically(plane, resampling.y, resampling.filter);
    plane = horizontally(plane, resampling.x, resampling.filter);
    RowFormat format = source.format;
    format.width = resampling.x.outSize;
    format.height = resampling.y.outSize;
    format.depth = outDepth;
    const double full = outDepth == SampleDepth::bits8 ? 255 : 65535;
    const std::size_t colors = format.colorChannels();
    return makePicture(format, [&](std::uint32_t x, std::uint32_t y, std::size_t c) {
        const double alpha = format.hasAlpha ? std::clamp(plane.at(x, y, colors), 0.0, 1.0) : 1.0;
        if (c == colors)
            return static_cast<unsigned>(std::lround(alpha * full));
        const double premultiplied = std::clamp(plane.at(x, y, c), 0.0, alpha);
        const double value = alpha > 0 ? premultiplied / alpha : 0;
        return static_cast<unsigned>(
            std::lround(full * (resampling.light == Light::linear ? curve.stored(value) : value)));
    });
}

} // namespace kestrine::testing
