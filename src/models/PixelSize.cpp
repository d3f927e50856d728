#include "models/PixelSize.h"

#include <algorithm>
#include <cmath>

namespace kestrine {

namespace {

/// Far above every picture, so that larger results are refused later.
constexpr double highestSide = 4e9;

struct Sides {
    double width, height;
};

std::uint32_t wholeSide(double side) {
    return static_cast<std::uint32_t>(std::clamp(std::round(side), 1.0, highestSide));
}

/// `sides` divided by their larger enlargement of the picture.
Sides withoutEnlargement(const Sides& sides, const Sides& picture) {
    const double enlargement = std::max({1.0, sides.width / picture.width, sides.height / picture.height});
    return {sides.width / enlargement, sides.height / enlargement};
}

/// `from` scaled so that its `reference` becomes `length`.
Sides scaledBy(const Sides& from, double length, double reference) {
    return {from.width * length / reference, from.height * length / reference};
}

/// The size that the rule asks for; the picture fills it.
Sides requestedSides(const PixelSize& size, const Sides& picture) {
    using Rule = PixelSize::Rule;
    switch (size.rule) {
    case Rule::percent:
        return scaledBy(picture, size.width, 100);
    case Rule::longest:
        return scaledBy(picture, size.width, std::max(picture.width, picture.height));
    case Rule::width:
        return scaledBy(picture, size.width, picture.width);
    case Rule::height:
        return scaledBy(picture, size.height, picture.height);
    case Rule::inside:
        return size.width * picture.height < size.height * picture.width
                   ? scaledBy(picture, size.width, picture.width)
                   : scaledBy(picture, size.height, picture.height);
    default:
        return {size.width, size.height};
    }
}

/// Scales a side of `length` pixels by `scale`, and crops it to the `outSize` pixels at `gravity`.
AxisMap cropped(double length, double scale, std::uint32_t outSize, double gravity) {
    const double offset = (length - outSize / scale) * gravity;
    return {scale, scale == 1 ? std::round(offset) : offset, outSize};
}

/// The number of pixels before a picture of `side` pixels in a box of `whole` pixels.
std::uint32_t before(std::uint32_t side, double whole, double gravity) {
    return static_cast<std::uint32_t>(std::floor((whole - side) * gravity));
}

Margins marginsFor(const PixelSize& size, std::uint32_t width, std::uint32_t height) {
    const std::uint32_t left = before(width, size.width, size.gravity.x);
    const std::uint32_t top = before(height, size.height, size.gravity.y);
    return {left, top, static_cast<std::uint32_t>(size.width) - width - left,
            static_cast<std::uint32_t>(size.height) - height - top};
}

} // namespace

PixelGeometry geometryFor(const PixelSize& size, std::uint32_t width, std::uint32_t height, bool enlarges) {
    const Sides picture = {double(width), double(height)};
    Sides sides = requestedSides(size, picture);
    if (!enlarges)
        sides = withoutEnlargement(sides, picture);
    const std::uint32_t x = wholeSide(sides.width), y = wholeSide(sides.height);
    if (size.rule != PixelSize::Rule::cover)
        return {AxisMap::filling(width, x), AxisMap::filling(height, y),
                size.padding ? marginsFor(size, x, y) : Margins{}};
    const double scale = std::max(x / picture.width, y / picture.height);
    return {cropped(picture.width, scale, x, size.gravity.x),
            cropped(picture.height, scale, y, size.gravity.y),
            {}};
}

} // namespace kestrine
