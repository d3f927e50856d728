#include "platform/imageio/jpeg/own/ComponentRows.h"

#include "platform/imageio/jpeg/kernels/ChromaUpsampling.h"

#include <algorithm>

namespace kestrine::jpeg {

Expansion expansionOf(const PlaneGeometry& geometry, bool isSmoothing) {
    constexpr std::uint32_t minSmoothedWidth = 3; // in samples; the library repeats narrower rows
    const int across = geometry.horizontalExpansion, down = geometry.verticalExpansion;
    if (across == 1 && down == 1)
        return Expansion::none;
    if (!isSmoothing)
        return Expansion::repeated;
    if (across == 1 && down == 2)
        return Expansion::smoothDown;
    if (across != 2 || down > 2 || geometry.width < minSmoothedWidth)
        return Expansion::repeated;
    return down == 1 ? Expansion::smoothAcross : Expansion::smoothBoth;
}

ComponentRows::ComponentRows(const PlaneGeometry& geometry, bool isSmoothing)
    : expansion_(expansionOf(geometry, isSmoothing)),
      expanded_(geometry.width * static_cast<std::size_t>(geometry.horizontalExpansion) + Plane::padding) {}

const std::uint8_t* ComponentRows::row(const Plane& plane, std::uint32_t band, std::uint32_t y) {
    const PlaneGeometry& geometry = plane.geometry();
    const auto sampleRow = [&](std::int64_t number) {
        const std::int64_t last = std::int64_t{geometry.height} - 1;
        return plane.row(std::clamp<std::int64_t>(number, 0, last)
                         - std::int64_t{band} * plane.rowsPerBand());
    };
    const std::int64_t nearest = y / static_cast<std::uint32_t>(geometry.verticalExpansion);
    const bool isUpper = y % 2 == 0; // of the two rows made of each one, where rows are doubled
    const std::int64_t next = isUpper ? nearest - 1 : nearest + 1;
    switch (expansion_) {
    case Expansion::none:
        return sampleRow(nearest);
    case Expansion::repeated:
        kernels::replicate(sampleRow(nearest), geometry.width, geometry.horizontalExpansion,
                           expanded_.data());
        break;
    case Expansion::smoothAcross:
        kernels::upsampleH2V1Fancy(sampleRow(nearest), geometry.width, expanded_.data());
        break;
    case Expansion::smoothDown:
        kernels::upsampleH1V2Fancy(sampleRow(nearest), sampleRow(next), isUpper, geometry.width,
                                   expanded_.data());
        break;
    case Expansion::smoothBoth:
        kernels::upsampleH2V2Fancy(sampleRow(nearest), sampleRow(next), geometry.width, expanded_.data());
        break;
    }
    return expanded_.data();
}

} // namespace kestrine::jpeg
