// PixelSize: a size rule in exact pixels.
#pragma once

#include "platform/coregraphics/AxisMap.h"
#include "platform/coregraphics/RGBColor.h"
#include "platform/coregraphics/RowStages.h"

#include <cstdint>
#include <optional>

namespace kestrine {

/// Which part of a picture a crop keeps: 0 is the left or top edge, 1 the right or bottom edge.
struct Gravity {
    double x = 0.5;
    double y = 0.5;

    bool operator==(const Gravity&) const = default;
};

struct PixelSize {
    enum class Rule : std::uint8_t {
        percent, ///< both sides to `width` percent
        longest, ///< the longer side to `width`
        width,   ///< to `width`; the height follows
        height,  ///< to `height`; the width follows
        stretch, ///< to exactly width x height
        inside,  ///< the largest size with these proportions that fits into width x height
        cover,   ///< to exactly width x height; the rest is cropped
    };
    Rule rule = Rule::percent;
    double width = 100;
    double height = 0;
    Gravity gravity;                 ///< for `cover` and `padding`
    std::optional<RGBColor> padding; ///< fills the rest of width x height; for `inside`

    bool operator==(const PixelSize&) const = default;
};

/// How a picture is scaled and cropped, to x.outSize x y.outSize pixels, at least 1 x 1.
struct PixelGeometry {
    AxisMap x, y;
    Margins margins; ///< around that

    bool operator==(const PixelGeometry&) const = default;
};

/// The geometry for a picture of width x height pixels. The sides of the result are rounded to whole pixels;
/// a side that the rule names has exactly that length. Unless `enlarges`, no side is enlarged: a stretched or
/// covered size then keeps only the proportions that were asked for.
PixelGeometry geometryFor(const PixelSize& size, std::uint32_t width, std::uint32_t height, bool enlarges);

} // namespace kestrine
