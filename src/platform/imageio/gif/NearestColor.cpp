#include "platform/imageio/gif/NearestColor.h"

#include <cstdlib>
#include <limits>

namespace kestrine::gif {

namespace {

/// Twice the middle, along one axis, of the cells of `width` that contain `level`; twice because that is a
/// whole number.
int twiceMiddle(int level, int width) { return 2 * (level - level % width) + width - 1; }

} // namespace

NearestColor::NearestColor(std::span<const Color> colors, std::optional<std::uint8_t> skipped)
    : fours_(std::size_t{1} << 3 * finestLevel, unknown) {
    for (std::size_t i = 0; i < colors.size(); ++i) {
        const std::span<const Color> before = colors.first(i);
        if (i == skipped || std::ranges::find(before, colors[i]) != before.end())
            continue;
        const std::array<int, 3> levels = {colors[i].red, colors[i].green, colors[i].blue};
        Choice choice{static_cast<int>(i), {}};
        for (std::size_t c = 0; c < 3; ++c) {
            choice.constant += 256 * colorWeights[c] * levels[c] * levels[c];
            choice.slope[c] = 256 * colorWeights[c] * 2 * levels[c];
        }
        listed_.push_back(static_cast<std::uint8_t>(choices_.size()));
        choices_.push_back(choice);
    }
    all_ = {0, static_cast<std::uint32_t>(choices_.size())};
    for (unsigned i = 0; i < listedLevels; ++i)
        lists_[i].resize(std::size_t{1} << 3 * (coarsestLevel + i));
}

NearestColor::Four NearestColor::fourNearest(Color color) {
    const List list = listFor(color, finestLevel - 1);
    constexpr int width = 1 << (8 - finestLevel);
    const int red = twiceMiddle(color.red, width), green = twiceMiddle(color.green, width),
              blue = twiceMiddle(color.blue, width);
    Four four{};
    std::array<int, 4> distances;
    distances.fill(std::numeric_limits<int>::max());
    for (std::uint32_t i = list.begin; i < list.begin + list.count; ++i) {
        const Choice& choice = choices_[listed_[i]];
        std::uint8_t candidate = listed_[i];
        int d = distance({2 * choice.constant, choice.slope}, red, green, blue);
        for (std::size_t k = 0; k < 4; ++k)
            if (d < distances[k]) {
                std::swap(d, distances[k]);
                std::swap(candidate, four[k]);
            }
    }
    return four;
}

NearestColor::List NearestColor::listFor(Color color, unsigned level) {
    List& list = lists_[level - coarsestLevel][cellOf(color, level)];
    if (list.count == 0)
        list = narrowed(level == coarsestLevel ? all_ : listFor(color, level - 1), color, level);
    return list;
}

/// The colours of `from` that can be nearest to some point of the cell of `color`. Compared with the colour
/// nearest to the middle of the cell, the difference of the distances is a linear function of the point, so a
/// corner has its minimum.
NearestColor::List NearestColor::narrowed(List from, Color color, unsigned level) {
    const int width = 1 << (8 - level);
    const int red = twiceMiddle(color.red, width), green = twiceMiddle(color.green, width),
              blue = twiceMiddle(color.blue, width);
    std::array<int, 256> distances;
    std::uint32_t nearest = 0;
    for (std::uint32_t i = 0; i < from.count; ++i) {
        const Choice& choice = choices_[listed_[from.begin + i]];
        distances[i] = distance({2 * choice.constant, choice.slope}, red, green, blue);
        nearest = distances[i] < distances[nearest] ? i : nearest;
    }
    const Choice middle = choices_[listed_[from.begin + nearest]];
    const List list{static_cast<std::uint32_t>(listed_.size()), 0};
    for (std::uint32_t i = 0; i < from.count; ++i) {
        const std::uint8_t candidate = listed_[from.begin + i];
        int reach = 0;
        for (std::size_t c = 0; c < 3; ++c)
            reach += std::abs(choices_[candidate].slope[c] - middle.slope[c]);
        if (distances[i] - distances[nearest] <= (width - 1) * reach)
            listed_.push_back(candidate);
    }
    return {list.begin, static_cast<std::uint32_t>(listed_.size()) - list.begin};
}

} // namespace kestrine::gif
