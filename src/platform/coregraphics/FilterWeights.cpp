#include "platform/coregraphics/FilterWeights.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <numeric>

namespace kestrine {

namespace {

constexpr double lanczosLobes = 3;

double supportOf(ResampleFilter filter) { return filter == ResampleFilter::lanczos ? lanczosLobes : 1; }

double triangle(double x) { return std::max(0.0, 1 - std::abs(x)); }

/// sinc(x) sinc(x / 3), where `sine` = sin a and a = pi x / 3. The other sine is sin 3a = 3 sin a - 4 sin^3
/// a.
double lanczos(double x, double sine) {
    if (std::abs(x) >= lanczosLobes)
        return 0;
    const double a = x * (std::numbers::pi / lanczosLobes);
    const double ratio = std::abs(a) < 1e-4 ? 1 - a * a / 6 : sine / a;
    return ratio * ratio * (1 - sine * sine * (4.0 / 3));
}

/// Computes the filter at x, x + step, x + 2 step, ... Each sine follows from the previous one by a rotation,
/// which adds an error of about 1e-16 per step.
class FilterValues {
public:
    FilterValues(ResampleFilter filter, double step)
        : filter_(filter), step_(step), sineOfStep_(std::sin(angle(step))),
          cosineOfStep_(std::cos(angle(step))) {}

    void append(double x, std::size_t count, std::vector<double>& values) const {
        if (filter_ == ResampleFilter::triangle) {
            for (std::size_t k = 0; k < count; ++k)
                values.push_back(triangle(x + static_cast<double>(k) * step_));
            return;
        }
        double sine = std::sin(angle(x)), cosine = std::cos(angle(x));
        for (std::size_t k = 0; k < count; ++k) {
            values.push_back(lanczos(x + static_cast<double>(k) * step_, sine));
            const double next = sine * cosineOfStep_ + cosine * sineOfStep_;
            cosine = cosine * cosineOfStep_ - sine * sineOfStep_;
            sine = next;
        }
    }

private:
    static double angle(double x) { return x * (std::numbers::pi / lanczosLobes); }

    const ResampleFilter filter_;
    const double step_, sineOfStep_, cosineOfStep_;
};

} // namespace

FilterWeights::FilterWeights(ResampleFilter filter, const AxisMap& map, std::uint32_t sourceSize) {
    const double stretch = std::max(1.0, 1 / map.scale);
    const double support = supportOf(filter) * stretch;
    const double last = sourceSize - 1.0;
    const FilterValues values(filter, 1 / stretch);
    std::vector<double> taps;
    first_.reserve(map.outSize);
    start_.reserve(map.outSize + std::size_t{1});
    start_.push_back(0);
    for (std::uint32_t i = 0; i < map.outSize; ++i) {
        const double centre = map.centre(i);
        // Source pixels whose centres lie inside the support. At its ends the filter is 0.
        const double from = std::clamp(std::floor(centre - support - 0.5) + 1, 0.0, last);
        const double to = std::clamp(std::ceil(centre + support - 0.5) - 1, from, last);
        taps.clear();
        values.append((from + 0.5 - centre) / stretch, static_cast<std::size_t>(to - from) + 1, taps);
        const double sum = std::accumulate(taps.begin(), taps.end(), 0.0);
        if (std::abs(sum) < 1e-6) // centred outside the source: use the pixel at the edge
            taps.assign(1, 1.0);
        else
            std::ranges::for_each(taps, [&](double& tap) { tap /= sum; });
        first_.push_back(static_cast<std::uint32_t>(from));
        weights_.insert(weights_.end(), taps.begin(), taps.end());
        start_.push_back(weights_.size());
    }
}

} // namespace kestrine
