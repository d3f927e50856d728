#include "platform/coregraphics/FilterWeights.h"

#include <algorithm>
#include <numbers>
#include <numeric>

namespace kestrine {

namespace {

constexpr double lanczosLobes = 3;

double sinc(double x) {
    const double t = std::numbers::pi * x;
    return x == 0 ? 1 : std::sin(t) / t;
}

double supportOf(ResampleFilter filter) { return filter == ResampleFilter::lanczos ? lanczosLobes : 1; }

double valueOf(ResampleFilter filter, double x) {
    const double distance = std::abs(x);
    if (distance >= supportOf(filter))
        return 0;
    return filter == ResampleFilter::lanczos ? sinc(distance) * sinc(distance / lanczosLobes) : 1 - distance;
}

/// Drops the outermost weights that are nothing in single precision, so that no row is fetched for them.
void trimZeros(std::vector<double>& weights, std::uint32_t& first) {
    const auto isSomething = [](double w) { return static_cast<float>(w) != 0; };
    const auto begin = std::ranges::find_if(weights, isSomething);
    first += static_cast<std::uint32_t>(begin - weights.begin());
    weights.erase(weights.begin(), begin);
    while (!isSomething(weights.back()))
        weights.pop_back();
}

} // namespace

FilterWeights::FilterWeights(ResampleFilter filter, const AxisMap& map, std::uint32_t sourceSize) {
    const double stretch = std::max(1.0, 1 / map.scale);
    const double support = supportOf(filter) * stretch;
    const double last = sourceSize - 1.0;
    std::vector<double> taps;
    first_.reserve(map.outSize);
    start_.reserve(map.outSize + std::size_t{1});
    start_.push_back(0);
    for (std::uint32_t i = 0; i < map.outSize; ++i) {
        const double centre = map.centre(i);
        const double from = std::clamp(std::ceil(centre - support - 0.5), 0.0, last);
        const double to = std::clamp(std::floor(centre + support - 0.5), from, last);
        auto first = static_cast<std::uint32_t>(from);
        taps.clear();
        for (double j = from; j <= to; ++j)
            taps.push_back(valueOf(filter, (j + 0.5 - centre) / stretch));
        const double sum = std::accumulate(taps.begin(), taps.end(), 0.0);
        if (std::abs(sum) < 1e-6) // centred beyond an edge: that edge's pixel stands for it
            taps.assign(1, 1.0);
        else
            std::ranges::for_each(taps, [&](double& tap) { tap /= sum; });
        trimZeros(taps, first);
        first_.push_back(first);
        weights_.insert(weights_.end(), taps.begin(), taps.end());
        start_.push_back(weights_.size());
    }
}

} // namespace kestrine
