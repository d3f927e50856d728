#include "platform/imageio/jpeg/own/BlockStrip.h"

#include <algorithm>
#include <functional>
#include <numeric>

namespace kestrine::jpeg {

int BlockStrip::lastNonZero(std::uint32_t group) const {
    const std::uint64_t* const blocks = nonZero_.data() + group * lanesOfGroup;
    const std::uint64_t any = std::accumulate(blocks, blocks + lanesOfGroup, std::uint64_t{1}, std::bit_or());
    return 63 - std::countl_zero(any);
}

void BlockStrip::clear(std::uint32_t number, int last) {
    std::memset(group(number).coefficients[1], 0,
                placesUpTo[static_cast<std::size_t>(last)] * sizeof LaneGroup::coefficients[0]);
    std::fill_n(nonZero_.data() + number * lanesOfGroup, lanesOfGroup, 0);
}

} // namespace kestrine::jpeg
