#include "platform/imageio/heif/PlanesToPixels.h"

#include <algorithm>
#include <limits>

namespace kestrine::heif {

namespace {

/// How stored samples become numbers: (sample - zero) / span.
struct Scale {
    double zero, span;
};

/// Brightness and the planes of RGB, from 0 to 1.
Scale brightnessScale(bool isFullRange, unsigned bits) {
    const double unit = 1u << (bits - 8);
    return isFullRange ? Scale{0, (1u << bits) - 1.0} : Scale{16 * unit, 219 * unit};
}

/// Colour differences, from -1/2 to 1/2.
Scale chromaScale(bool isFullRange, unsigned bits) {
    const double unit = 1u << (bits - 8);
    return {128 * unit, isFullRange ? (1u << bits) - 1.0 : 224 * unit};
}

template <class Sample>
void widen(const Sample* from, std::uint32_t count, float* to) {
    for (std::uint32_t i = 0; i < count; ++i)
        to[i] = from[i];
}

/// 3/4 of the nearer row and 1/4 of the other one.
template <class Sample>
void mixRows(const Sample* near, const Sample* far, std::uint32_t count, float* to) {
    for (std::uint32_t i = 0; i < count; ++i)
        to[i] = static_cast<float>(3 * near[i] + far[i]) * 0.25f;
}

/// Twice as many columns. `half` has (count + 1) / 2 samples.
void doubleColumns(const float* half, std::uint32_t count, float* to) {
    const std::uint32_t last = (count + 1) / 2 - 1;
    to[0] = half[0];
    for (std::uint32_t i = 0; i < last; ++i) {
        to[2 * i + 1] = half[i] * 0.75f + half[i + 1] * 0.25f;
        to[2 * i + 2] = half[i + 1] * 0.75f + half[i] * 0.25f;
    }
    if (count % 2 == 0)
        to[count - 1] = half[last];
}

template <class Sample>
const Sample* samplesOf(const Plane& plane, std::uint32_t y) {
    return reinterpret_cast<const Sample*>(plane.row(y));
}

template <class Sample>
Sample rounded(float value) {
    constexpr float largest = std::numeric_limits<Sample>::max();
    return static_cast<Sample>(static_cast<std::int32_t>(std::clamp(value, 0.0f, largest) + 0.5f));
}

} // namespace

Result<PlanesToPixels> PlanesToPixels::create(const DecodedPlanes& planes,
                                              const std::optional<CodingPoints>& points,
                                              const RowFormat& layout) {
    const CodingPoints used = points.value_or(planes.points);
    constexpr std::uint16_t identity = 0;
    const std::optional<ColorMatrix> matrix = matrixOf(used);
    const bool hasColors = layout.model == ColorModel::rgb && !planes.isMonochrome;
    if (hasColors && !matrix)
        return Failure{Reason::unsupported, "HEIF and AVIF pictures with colour matrix "
                                                + std::to_string(used.matrix) + " are not supported"};
    PlanesToPixels converter(planes, layout);
    const double full = layout.depth == SampleDepth::bits8 ? 255 : 65535;
    const Scale brightness = brightnessScale(used.isFullRange, planes.bits);
    const Scale chroma = used.matrix == identity ? brightness : chromaScale(used.isFullRange, planes.bits);
    for (std::size_t color = 0; color < 3; ++color) {
        double offset = 0;
        for (std::size_t plane = 0; plane < 3; ++plane) {
            const Scale& scale = plane == 0 ? brightness : chroma;
            const double share = hasColors ? (*matrix)[color][plane] : plane == 0 ? 1 : 0;
            const double factor = share * full / scale.span;
            converter.factors_[color][plane] = static_cast<float>(factor);
            offset -= factor * scale.zero;
        }
        converter.offsets_[color] = static_cast<float>(offset);
    }
    return converter;
}

void PlanesToPixels::convert(std::uint32_t y, std::uint32_t width, std::uint8_t* row) {
    loadBrightness(y, width);
    if (layout_.model == ColorModel::rgb && !planes_.isMonochrome) {
        loadChroma(1, y, width);
        loadChroma(2, y, width);
    }
    if (layout_.depth == SampleDepth::bits8)
        store(width, row);
    else
        store(width, reinterpret_cast<std::uint16_t*>(row));
}

void PlanesToPixels::loadBrightness(std::uint32_t y, std::uint32_t width) {
    const Plane& plane = planes_.planes[0];
    samples_[0].resize(width);
    if (planes_.bits > 8)
        widen(samplesOf<std::uint16_t>(plane, y), width, samples_[0].data());
    else
        widen(samplesOf<std::uint8_t>(plane, y), width, samples_[0].data());
}

void PlanesToPixels::loadChroma(std::size_t number, std::uint32_t y, std::uint32_t width) {
    const Plane& plane = planes_.planes[number];
    const std::uint32_t count = planes_.isHalfWidth ? (width + 1) / 2 : width;
    std::vector<float>& full = samples_[number];
    full.resize(width);
    halfRow_.resize(count);
    float* const to = planes_.isHalfWidth ? halfRow_.data() : full.data();
    const std::uint32_t near = planes_.isHalfHeight ? y / 2 : y;
    const std::uint32_t above = near == 0 ? 0 : near - 1, below = std::min(near + 1, plane.size.height - 1);
    const std::uint32_t far = !planes_.isHalfHeight ? near : y % 2 == 0 ? above : below;
    const auto load = [&]<class Sample>(const Sample* nearRow, const Sample* farRow) {
        if (planes_.isHalfHeight)
            mixRows(nearRow, farRow, count, to);
        else
            widen(nearRow, count, to);
    };
    if (planes_.bits > 8)
        load(samplesOf<std::uint16_t>(plane, near), samplesOf<std::uint16_t>(plane, far));
    else
        load(samplesOf<std::uint8_t>(plane, near), samplesOf<std::uint8_t>(plane, far));
    if (planes_.isHalfWidth)
        doubleColumns(halfRow_.data(), width, full.data());
}

template <class Sample>
void PlanesToPixels::store(std::uint32_t width, Sample* row) {
    const std::size_t channels = layout_.channels(), colors = layout_.colorChannels();
    const bool hasColors = colors == 3 && !planes_.isMonochrome;
    for (std::size_t color = 0; color < (hasColors ? 3 : 1); ++color) {
        colors_[color].resize(width);
        float* const to = colors_[color].data();
        const float offset = offsets_[color];
        const auto& factors = factors_[color];
        const float* const y = samples_[0].data();
        if (!hasColors) {
            for (std::uint32_t i = 0; i < width; ++i)
                to[i] = y[i] * factors[0] + offset;
            continue;
        }
        const float* const cb = samples_[1].data();
        const float* const cr = samples_[2].data();
        for (std::uint32_t i = 0; i < width; ++i)
            to[i] = y[i] * factors[0] + cb[i] * factors[1] + cr[i] * factors[2] + offset;
    }
    for (std::size_t color = 0; color < colors; ++color) {
        const float* const from = colors_[hasColors ? color : 0].data();
        for (std::uint32_t i = 0; i < width; ++i)
            row[i * channels + color] = rounded<Sample>(from[i]);
    }
    if (layout_.hasAlpha)
        for (std::uint32_t i = 0; i < width; ++i)
            row[i * channels + colors] = std::numeric_limits<Sample>::max();
}

} // namespace kestrine::heif
