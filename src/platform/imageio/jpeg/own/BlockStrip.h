// BlockStrip: neighbouring blocks of a row of a progressive JPEG. All scans of a component add to one strip
// before they go to the next one, so the coefficients stay in the processor's innermost cache.
#pragma once

#include "platform/imageio/jpeg/own/BlockDecoder.h"

namespace kestrine::jpeg {

class BlockStrip {
public:
    static constexpr std::uint32_t groups = 4;
    static constexpr std::uint32_t blocks = groups * lanesOfGroup;

    LaneGroup& group(std::size_t number) { return groups_[number]; }

    /// The first coefficient of a block; for the offsets of the others see offsetAlongZigzag.
    std::int16_t* block(std::uint32_t number) {
        return group(number / lanesOfGroup).coefficients[0] + number % lanesOfGroup;
    }

    /// The set of the AC coefficients of a block that are not 0: bit k stands for position k along the
    /// zigzag.
    std::uint64_t& nonZero(std::uint32_t number) { return nonZero_[number]; }

    /// The position along the zigzag after which all coefficients of a group are 0.
    int lastNonZero(std::uint32_t group) const;

    /// Sets the AC coefficients of a group to 0. `last` is its lastNonZero(), or 0 if none was stored.
    void clear(std::uint32_t number, int last);

private:
    std::array<LaneGroup, groups> groups_{};
    std::array<std::uint64_t, blocks> nonZero_{};
};

} // namespace kestrine::jpeg
