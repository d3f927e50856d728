// AxisMap: the positions of the pixels of a result along one axis of its source.
#pragma once

#include <cmath>
#include <cstdint>

namespace kestrine {

/// Pixel i of the result covers [offset + i / scale, offset + (i + 1) / scale) of the source, in source
/// pixels from the left or top edge. Cropping, mirroring and decoding at a reduced size only change these
/// three numbers.
struct AxisMap {
    double scale = 1;
    double offset = 0;
    std::uint32_t outSize = 0;

    bool operator==(const AxisMap&) const = default;

    bool isReduction() const { return scale < 1; }
    bool isIdentity(std::uint32_t sourceSize) const {
        return scale == 1 && offset == 0 && outSize == sourceSize;
    }

    /// The map from all `sourceSize` pixels to `outSize` pixels.
    static AxisMap filling(std::uint32_t sourceSize, std::uint32_t outSize) {
        return {static_cast<double>(outSize) / sourceSize, 0, outSize};
    }

    /// The map for a mirrored result of the mirrored source, which has `sourceSize` pixels.
    AxisMap mirrored(std::uint32_t sourceSize) const {
        return {scale, sourceSize - offset - outSize / scale, outSize};
    }

    /// The map for the same source decoded at 1 / 2^`halvings` of its size.
    AxisMap afterHalvings(int halvings) const {
        return {std::ldexp(scale, halvings), std::ldexp(offset, -halvings), outSize};
    }

    /// Position in the source of the centre of result pixel i.
    double centre(std::uint32_t i) const { return offset + (i + 0.5) / scale; }
};

} // namespace kestrine
