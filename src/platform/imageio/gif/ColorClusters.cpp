#include "platform/imageio/gif/ColorClusters.h"

#include "platform/imageio/gif/NearestColor.h"

#include <algorithm>
#include <cmath>

namespace kestrine::gif {

namespace {

/// How far the outer colours move outwards, in standard deviations of the colours that they represent. Found
/// by experiment: more gives a coarser grain, less makes saturated areas pale.
constexpr double outwardDeviations = 2.5;

struct Point {
    std::array<std::uint8_t, 3> levels;
    std::uint32_t pixels;
};

using Vector = std::array<double, 3>;

/// Sums over a set of points.
struct Tally {
    std::uint64_t pixels = 0;
    std::array<std::uint64_t, 3> levels{};

    void add(const Point& point) {
        pixels += point.pixels;
        for (std::size_t c = 0; c < 3; ++c)
            levels[c] += std::uint64_t{point.pixels} * point.levels[c];
    }
    void add(const Tally& other) {
        pixels += other.pixels;
        for (std::size_t c = 0; c < 3; ++c)
            levels[c] += other.levels[c];
    }
};

/// A set of points and its best division: points up to level `cut` of `channel`, and the others.
struct Box {
    std::span<Point> points;
    Tally tally{};
    double gain = 0; ///< of the division, see gainOf(); 0 when the points cannot be divided
    std::size_t channel = 0;
    unsigned cut = 0;

    Vector mean() const {
        const auto level = [this](std::size_t c) {
            return static_cast<double>(tally.levels[c]) / static_cast<double>(tally.pixels);
        };
        return {level(0), level(1), level(2)};
    }
};

/// The root mean square distance of the points from their mean.
double deviationOf(const Box& box) {
    const Vector mean = box.mean();
    double sum = 0;
    for (const Point& point : box.points)
        for (std::size_t c = 0; c < 3; ++c)
            sum += point.pixels * (point.levels[c] - mean[c]) * (point.levels[c] - mean[c]);
    return std::sqrt(sum / static_cast<double>(box.tally.pixels));
}

/// The amount by which a division reduces the sum of the weighted squared distances from the means. `all` are
/// the sums over all points, `low` those over one of the two parts.
double gainOf(const Tally& low, const Tally& all) {
    const double pixels = static_cast<double>(all.pixels), lowPixels = static_cast<double>(low.pixels);
    double gain = 0;
    for (std::size_t c = 0; c < 3; ++c) {
        const double excess =
            static_cast<double>(low.levels[c]) * pixels - static_cast<double>(all.levels[c]) * lowPixels;
        gain += colorWeights[c] * excess * excess;
    }
    return gain / (pixels * lowPixels * (pixels - lowPixels));
}

/// Tries every cut of the box along one channel. `levels` has the sums over the points of each level, from
/// level `lowest` on.
void considerCuts(Box& box, std::size_t channel, unsigned lowest, std::span<const Tally> levels) {
    Tally low;
    for (unsigned i = 0; i + 1 < levels.size(); ++i) {
        if (levels[i].pixels == 0)
            continue;
        low.add(levels[i]);
        if (const double gain = gainOf(low, box.tally); gain > box.gain) {
            box.gain = gain;
            box.channel = channel;
            box.cut = lowest + i;
        }
    }
}

Box boxOf(std::span<Point> points) {
    Box box{points};
    for (const Point& point : points)
        box.tally.add(point);
    for (std::size_t channel = 0; channel < 3; ++channel) {
        const auto levelOf = [channel](const Point& point) -> unsigned { return point.levels[channel]; };
        const unsigned lowest = levelOf(*std::ranges::min_element(points, {}, levelOf));
        const unsigned highest = levelOf(*std::ranges::max_element(points, {}, levelOf));
        std::vector<Tally> levels(highest - lowest + 1);
        for (const Point& point : points)
            levels[levelOf(point) - lowest].add(point);
        considerCuts(box, channel, lowest, levels);
    }
    return box;
}

std::vector<Box> divide(std::span<Point> points, std::size_t count) {
    std::vector<Box> boxes{boxOf(points)};
    while (boxes.size() < count) {
        Box& widest = *std::ranges::max_element(boxes, {}, &Box::gain);
        if (widest.gain <= 0)
            break;
        const auto isLow = [&](const Point& point) { return point.levels[widest.channel] <= widest.cut; };
        const std::span<Point> all = widest.points;
        const auto high = std::partition(all.begin(), all.end(), isLow);
        const auto low = static_cast<std::size_t>(high - all.begin());
        widest = boxOf(all.first(low));
        boxes.push_back(boxOf(all.subspan(low)));
    }
    return boxes;
}

/// A direction from `color` away from its neighbours. Its length is about 0 inside the cloud of colours and
/// nearly 1 at its edge.
Vector outwards(const Vector& color, std::span<const Vector> all) {
    Vector sum{};
    double weights = 0, weightedSquares = 0;
    for (const Vector& other : all) {
        const Vector away = {color[0] - other[0], color[1] - other[1], color[2] - other[2]};
        const double square = away[0] * away[0] + away[1] * away[1] + away[2] * away[2];
        const double weight = square > 0 ? 1 / (square * square) : 0;
        for (std::size_t c = 0; c < 3; ++c)
            sum[c] += away[c] * weight;
        weights += weight;
        weightedSquares += square * weight;
    }
    // An upper bound for the length of the sum.
    const double longest = std::sqrt(weights * weightedSquares);
    for (double& component : sum)
        component = longest > 0 ? component / longest : 0;
    return sum;
}

std::uint8_t level(double value) { return static_cast<std::uint8_t>(std::clamp(value + 0.5, 0.0, 255.0)); }

} // namespace

/// Dithering cannot show colours outside the range of the palette, so the means of the clusters are not
/// sufficient. Means at the edge of the cloud move outwards in proportion to the width of their cluster. The
/// colour of a flat area does not move.
std::vector<Color> representativeColors(std::span<const Histogram::Entry> entries, std::size_t count) {
    std::vector<Point> points;
    for (const Histogram::Entry& entry : entries) {
        const Color mean = entry.mean();
        points.push_back({{mean.red, mean.green, mean.blue}, entry.pixels});
    }
    const std::vector<Box> boxes = divide(points, count);
    std::vector<Vector> means;
    for (const Box& box : boxes)
        means.push_back(box.mean());
    std::vector<Color> colors;
    for (std::size_t i = 0; i < boxes.size(); ++i) {
        const Vector direction = outwards(means[i], means);
        const double distance = outwardDeviations * deviationOf(boxes[i]);
        colors.push_back({level(means[i][0] + distance * direction[0]),
                          level(means[i][1] + distance * direction[1]),
                          level(means[i][2] + distance * direction[2])});
    }
    return colors;
}

} // namespace kestrine::gif
