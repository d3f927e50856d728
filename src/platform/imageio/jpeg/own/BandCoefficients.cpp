#include "platform/imageio/jpeg/own/BandCoefficients.h"

#include <algorithm>
#include <bit>
#include <functional>
#include <numeric>

namespace kestrine::jpeg {

void BandCoefficients::prepare(const Component& component, std::uint32_t blocksAcross,
                               std::uint32_t blocksDown, std::uint32_t mcusAcross) {
    blocksAcross_ = blocksAcross;
    blocksDown_ = blocksDown;
    rows_ = component.vertical;
    columnsPerMCU_ = component.horizontal;
    groupsAcross_ =
        static_cast<std::uint32_t>((mcusAcross * columnsPerMCU_ + lanesOfGroup - 1) / lanesOfGroup);
    groups_.assign(std::size_t{rows_} * groupsAcross_, LaneGroup{});
    nonZero_.assign(groups_.size() * lanesOfGroup, 0);
}

int BandCoefficients::lastNonZero(std::uint32_t row, std::uint32_t group) {
    const std::uint64_t* const blocks = nonZero(row) + group * lanesOfGroup;
    const std::uint64_t any = std::accumulate(blocks, blocks + lanesOfGroup, std::uint64_t{1}, std::bit_or());
    return 63 - std::countl_zero(any);
}

void BandCoefficients::clear(std::uint32_t row, std::uint32_t number, int last) {
    std::memset(group(row, number).coefficients[0], 0,
                (placesUpTo[static_cast<std::size_t>(last)] + std::size_t{1})
                    * sizeof LaneGroup::coefficients[0]);
    std::fill_n(nonZero(row) + number * lanesOfGroup, lanesOfGroup, 0);
}

} // namespace kestrine::jpeg
