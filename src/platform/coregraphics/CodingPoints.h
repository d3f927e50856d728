// CodingPoints: how samples of a picture become colours, given by the code points of ITU-T H.273 (CICP) in
// HEIF, AVIF, PNG and compressed pictures.
#pragma once

#include "platform/coregraphics/ColorProfile.h"

#include <array>
#include <optional>

namespace kestrine {

struct CodingPoints {
    std::uint16_t primaries = 2; ///< 2: not specified, as for the others
    std::uint16_t transfer = 2;
    std::uint16_t matrix = 2;
    bool isFullRange = false;

    bool operator==(const CodingPoints&) const = default;
};

/// Red, green and blue as sums of Y, Cb and Cr, where Y goes from 0 to 1, and Cb and Cr from -1/2 to 1/2.
using ColorMatrix = std::array<std::array<double, 3>, 3>;

/// Unspecified matrices count as that of BT.601. nullopt for those that are not linear (10, 13, 14) or not
/// used (11).
std::optional<ColorMatrix> matrixOf(const CodingPoints& points);

/// The profile of pixels with these primaries and this transfer function; nullopt for sRGB, which needs none.
/// Unspecified numbers and the transfer functions of video (BT.601, BT.709, BT.2020) count as those of sRGB,
/// because that is how such pictures are shown; PQ and HLG too, because their pixels are mapped to it.
std::optional<ColorProfile> profileOf(const CodingPoints& points, ColorModel model);

} // namespace kestrine
