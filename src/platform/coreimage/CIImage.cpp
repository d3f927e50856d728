#include "platform/coreimage/CIImage.h"

#include "platform/host/FailureCollector.h"

#include <algorithm>
#include <cassert>
#include <cmath>

namespace kestrine {

namespace {

/// nullopt for a side that no image can have. Notes a failure if the side is too long. One pixel more than
/// the largest side is accepted, because a crop follows.
std::optional<std::uint32_t> wholePixels(double side) {
    const double whole = std::floor(side + std::max(0.01, side / 2097152.0));
    if (whole > maximumSide + 1.0)
        noteFailure(sideTooLong());
    if (!(whole >= 1 && whole <= maximumSide + 1.0))
        return std::nullopt;
    return static_cast<std::uint32_t>(whole);
}

/// Positions count from the left edge.
AxisMap fromTheLeft(double scale, std::uint32_t outSize) { return {scale, 0, outSize}; }

/// Positions count from the bottom edge, rows from the top.
AxisMap fromTheBottom(double scale, std::uint32_t sourceSize, std::uint32_t outSize) {
    return fromTheLeft(scale, outSize).mirrored(sourceSize);
}

} // namespace

std::optional<CIImage> lanczosScaleTransform(const CIImage& image, float scale, float aspectRatio) {
    const CIExtent source = image.extent();
    const double scaleX = static_cast<double>(scale) * aspectRatio;
    const double scaleY = scale;
    const auto width = wholePixels(source.width * scaleX);
    const auto height = wholePixels(source.height * scaleY);
    if (!width || !height)
        return std::nullopt;
    const Light light = scaleX < 1 || scaleY < 1 ? Light::linear : Light::stored;
    return CIImage(image.picture().with(Resampling{fromTheLeft(scaleX, *width),
                                                   fromTheBottom(scaleY, source.height, *height),
                                                   ResampleFilter::lanczos, light}));
}

std::optional<CIImage> crop(const CIImage& image, CIExtent rectangle) {
    assert(!image.picture().steps.empty());
    Picture picture = image.picture();
    auto& resampling = std::get<Resampling>(picture.steps.back());
    const std::uint32_t width = std::min(rectangle.width, resampling.x.outSize);
    const std::uint32_t height = std::min(rectangle.height, resampling.y.outSize);
    if (width == 0 || height == 0)
        return std::nullopt;
    const std::uint32_t rowsLost = resampling.y.outSize - height;
    resampling.x.outSize = width;
    resampling.y = {resampling.y.scale, resampling.y.offset + rowsLost / resampling.y.scale, height};
    return CIImage(std::move(picture));
}

} // namespace kestrine
