#include "platform/imageio/gif/Palette.h"

#include "platform/imageio/gif/ColorClusters.h"
#include "platform/imageio/gif/NearestColor.h"

#include <algorithm>

namespace kestrine::gif {

namespace {

constexpr std::size_t maximumColors = 256;

int distance(Color a, Color b) {
    const int red = a.red - b.red, green = a.green - b.green, blue = a.blue - b.blue;
    return colorWeights[0] * red * red + colorWeights[1] * green * green + colorWeights[2] * blue * blue;
}

/// The entry that is nearest to the fewest pixels; the last one of several.
std::uint8_t leastUsed(const std::vector<Color>& colors, const Histogram& histogram) {
    std::vector<std::uint64_t> uses(colors.size());
    for (const Histogram::Entry& entry : histogram.entries()) {
        const auto distanceTo = [mean = entry.mean()](Color color) { return distance(color, mean); };
        const auto nearest = std::ranges::min_element(colors, {}, distanceTo);
        uses[static_cast<std::size_t>(nearest - colors.begin())] += entry.pixels;
    }
    const auto least = std::min_element(uses.rbegin(), uses.rend());
    return static_cast<std::uint8_t>(uses.rend() - least - 1);
}

} // namespace

Palette paletteOfPicture(const Histogram& histogram, bool needsTransparency) {
    const std::size_t room = needsTransparency ? maximumColors - 1 : maximumColors;
    Palette palette;
    if (histogram.isExact() && histogram.entries().size() <= room)
        for (const Histogram::Entry& entry : histogram.entries())
            palette.colors.push_back(entry.mean());
    else
        palette.colors = representativeColors(histogram.entries(), room);
    if (needsTransparency) {
        palette.transparent = static_cast<std::uint8_t>(palette.colors.size());
        palette.colors.push_back({});
    }
    return palette;
}

Palette paletteOfTable(ByteView table, const Histogram& histogram, bool needsTransparency) {
    Palette palette;
    for (std::size_t i = 0; i < table.size(); i += 3)
        palette.colors.push_back({table[i], table[i + 1], table[i + 2]});
    if (!needsTransparency)
        return palette;
    if (palette.colors.size() == maximumColors) {
        palette.transparent = leastUsed(palette.colors, histogram);
    } else {
        palette.transparent = static_cast<std::uint8_t>(palette.colors.size());
        palette.colors.push_back({});
    }
    return palette;
}

std::vector<std::uint8_t> exactIndices(const Palette& palette, const Histogram& histogram) {
    std::vector<std::uint8_t> indices;
    if (!histogram.isExact() || histogram.entries().size() > palette.colors.size())
        return indices;
    for (const Histogram::Entry& entry : histogram.entries()) {
        std::size_t index = 0;
        while (index < palette.colors.size()
               && (palette.colors[index] != entry.mean() || index == palette.transparent))
            ++index;
        if (index == palette.colors.size())
            return {};
        indices.push_back(static_cast<std::uint8_t>(index));
    }
    return indices;
}

bool isColorTable(ByteView table) {
    return !table.empty() && table.size() % 3 == 0 && table.size() <= 3 * maximumColors;
}

} // namespace kestrine::gif
