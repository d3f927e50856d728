#include "platform/coregraphics/ToneMapping.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

namespace kestrine {

namespace {

constexpr double whiteLight = 203; ///< of the result, cd/m2
constexpr std::size_t codes = 65536;

// SMPTE ST 2084.
constexpr double m1 = 2610.0 / 16384, m2 = 2523.0 / 4096 * 128;
constexpr double c1 = 3424.0 / 4096, c2 = 2413.0 / 4096 * 32, c3 = 2392.0 / 4096 * 32;
constexpr double maxPQ = 10000; ///< cd/m2

double lightOfPQ(double stored) {
    const double root = std::pow(stored, 1 / m2);
    return maxPQ * std::pow(std::max(root - c1, 0.0) / (c2 - c3 * root), 1 / m1);
}

double storedInPQ(double light) {
    const double power = std::pow(light / maxPQ, m1);
    return std::pow((c1 + c2 * power) / (1 + c3 * power), m2);
}

/// The light in the scene, 0 to 1 (ITU-R BT.2100).
double lightOfHLG(double stored) {
    constexpr double a = 0.17883277, b = 1 - 4 * a;
    static const double c = 0.5 - a * std::log(4 * a);
    return stored <= 0.5 ? stored * stored / 3 : (std::exp((stored - c) / a) + b) / 12;
}

/// ITU-R BT.2390, section 5.4.1: compresses light up to `peak` to `white`. Both in cd/m2.
double compressed(double light, double peak) {
    const double source = storedInPQ(peak), target = storedInPQ(whiteLight) / source;
    const double knee = 1.5 * target - 0.5;
    const double stored = std::min(storedInPQ(light) / source, 1.0);
    if (stored <= knee)
        return light;
    const double t = (stored - knee) / (1 - knee), t2 = t * t, t3 = t2 * t;
    const double mapped =
        (2 * t3 - 3 * t2 + 1) * knee + (t3 - 2 * t2 + t) * (1 - knee) + (-2 * t3 + 3 * t2) * target;
    return std::min(lightOfPQ(mapped * source), whiteLight);
}

double storedInSRGB(double light) {
    return light <= 0.0031308 ? 12.92 * light : 1.055 * std::pow(light, 1 / 2.4) - 0.055;
}

/// A table over the square root of light from 0 to 1, which is fine enough near black.
template <class Function>
std::vector<float> tableOverRoots(Function valueOf) {
    std::vector<float> table(codes);
    for (std::size_t i = 0; i < codes; ++i) {
        const double root = static_cast<double>(i) / (codes - 1);
        table[i] = static_cast<float>(valueOf(root * root));
    }
    return table;
}

float lookUp(const std::vector<float>& table, float light) {
    const float root = std::sqrt(std::clamp(light, 0.0f, 1.0f));
    return table[static_cast<std::size_t>(root * (codes - 1) + 0.5f)];
}

/// The light of BT.2020, whose primaries HLG pictures have, as HLG's own definition weighs it.
float brightnessOf(const float* light, std::size_t colors) {
    return colors == 1 ? light[0] : 0.2627f * light[0] + 0.6780f * light[1] + 0.0593f * light[2];
}

class SDRRows final : public RowSource {
public:
    SDRRows(RowSourcePointer input, HDRTransfer transfer, double peak)
        : RowSource(input->format()), input_(std::move(input)), isHLG_(transfer == HDRTransfer::hlg),
          light_(codes) {
        for (std::size_t i = 0; i < codes; ++i) {
            const double stored = static_cast<double>(i) / (codes - 1);
            light_[i] =
                static_cast<float>(isHLG_ ? lightOfHLG(stored) : std::min(lightOfPQ(stored) / peak, 1.0));
        }
        system_ = tableOverRoots([](double brightness) { return std::pow(brightness, 0.2); });
        gain_ = tableOverRoots([peak](double light) {
            return light == 0 ? peak / whiteLight : compressed(light * peak, peak) / (light * whiteLight);
        });
        stored_ = tableOverRoots([](double light) { return storedInSRGB(light) * (codes - 1) + 0.5; });
    }

    Result<void> readRow(std::span<std::uint8_t> row) override {
        TRY(input_->readRow(row));
        if (format().depth == SampleDepth::bits8)
            mapRow(row.data());
        else
            mapRow(reinterpret_cast<std::uint16_t*>(row.data()));
        return {};
    }

private:
    template <class Sample>
    void mapRow(Sample* sample) const {
        const std::size_t colors = format().colorChannels();
        for (std::uint32_t x = 0; x < format().width; ++x, sample += format().channels())
            map(sample, colors);
    }

    template <class Sample>
    void map(Sample* sample, std::size_t colors) const {
        constexpr std::size_t step = (codes - 1) / std::numeric_limits<Sample>::max(); // between two samples
        float light[3];
        float largest = 0;
        for (std::size_t c = 0; c < colors; ++c)
            largest = std::max(largest, light[c] = light_[sample[c] * step]);
        // HLG: from the light of the scene to that of the display.
        const float system = isHLG_ ? lookUp(system_, brightnessOf(light, colors)) : 1;
        const float scale = system * lookUp(gain_, largest * system);
        for (std::size_t c = 0; c < colors; ++c)
            sample[c] = static_cast<Sample>(
                (static_cast<std::size_t>(lookUp(stored_, light[c] * scale)) + step / 2) / step);
    }

    const RowSourcePointer input_;
    const bool isHLG_;
    std::vector<float> light_;  ///< by stored code, relative to the peak
    std::vector<float> system_; ///< HLG: the factor from scene to display, by brightness
    std::vector<float> gain_;   ///< from light relative to the peak to light relative to white, by the former
    std::vector<float> stored_; ///< codes, by light relative to white
};

} // namespace

std::optional<HDREncoding> hdrEncodingOf(const CodingPoints& points, double brightestLight) {
    constexpr std::uint16_t pq = 16, hlg = 18;
    if (points.transfer == hlg)
        return HDREncoding{HDRTransfer::hlg, defaultPeak};
    if (points.transfer != pq)
        return std::nullopt;
    return HDREncoding{HDRTransfer::pq, brightestLight > 0 ? brightestLight : defaultPeak};
}

RowSourcePointer rowsInSDR(RowSourcePointer rows, const HDREncoding& range) {
    return std::make_unique<SDRRows>(std::move(rows), range.transfer, std::max(range.peak, whiteLight));
}

} // namespace kestrine
