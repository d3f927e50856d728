// ComponentRows: the rows of one component, expanded to the width and height of the picture.
#pragma once

#include "platform/imageio/jpeg/own/SampleBand.h"

namespace kestrine::jpeg {

/// How samples become pixels. In each direction that is doubled, smoothing mixes 3 parts of the nearest
/// sample with 1 part of the next one. libjpeg-turbo smooths in the same cases.
enum class Expansion { none, repeated, smoothAcross, smoothDown, smoothBoth };

/// `isSmoothing` must be false for pictures reduced to an eighth.
Expansion expansionOf(const PlaneGeometry& geometry, bool isSmoothing);

class ComponentRows {
public:
    ComponentRows(const PlaneGeometry& geometry, bool isSmoothing);

    /// Whether the rows at the border of two bands need samples of both.
    bool crossesBands() const {
        return expansion_ == Expansion::smoothDown || expansion_ == Expansion::smoothBoth;
    }

    /// Row `y` of the picture, made from `plane`, which holds band number `band` and the last row of the band
    /// before. Valid until the next call or the next band.
    const std::uint8_t* row(const Plane& plane, std::uint32_t band, std::uint32_t y);

private:
    Expansion expansion_;
    Bytes expanded_;
};

} // namespace kestrine::jpeg
