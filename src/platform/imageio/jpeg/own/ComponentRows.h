// ComponentRows: the rows of one component as wide and as many as the picture's.
#pragma once

#include "platform/imageio/jpeg/own/PlaneDecoder.h"

namespace kestrine::jpeg {

/// How samples become pixels. Smoothing gives each pixel 3 parts of the nearest sample and 1 of the next one,
/// in each direction that is doubled; the general library does it in the same cases.
enum class Expansion { none, repeated, smoothAcross, smoothDown, smoothBoth };

/// `isSmoothing` is off for pictures reduced to an eighth.
Expansion expansionOf(const PlaneGeometry& geometry, bool isSmoothing);

class ComponentRows {
public:
    ComponentRows(const PlaneGeometry& geometry, bool isSmoothing);

    /// Whether a row at the border of two bands needs both of them.
    bool crossesBands() const {
        return expansion_ == Expansion::smoothDown || expansion_ == Expansion::smoothBoth;
    }

    /// Row `y` of the picture; the row's samples are in `plane`, where band number `band` stands. Valid until
    /// the next call and the next band.
    const std::uint8_t* row(const Plane& plane, std::uint32_t band, std::uint32_t y);

private:
    Expansion expansion_;
    Bytes expanded_;
};

} // namespace kestrine::jpeg
