// CIImage: a picture with filters that are recorded and run later. The y axis points up; extents begin at (0,
// 0).
#pragma once

#include "platform/imageio/Picture.h"

#include <optional>

namespace kestrine {

/// Width and height of an image in whole pixels.
struct CIExtent {
    std::uint32_t width = 0;
    std::uint32_t height = 0;

    bool operator==(const CIExtent&) const = default;
};

class CIImage {
public:
    explicit CIImage(Picture picture) : picture_(std::move(picture)) {}

    const Picture& picture() const { return picture_; }
    CIExtent extent() const { return {picture_.width(), picture_.height()}; }

private:
    Picture picture_;
};

/// Filter "CILanczosScaleTransform": scaled by scale * aspectRatio horizontally and by scale vertically, in
/// linear light where either axis is reduced and in the stored encoding where both are enlarged (linear light
/// would give dark ringing). A side of x scaled pixels has floor(x + max(0.01, x / 2^21)) whole pixels:
/// without the small addition, the rounding of the single-precision factors could cost a requested whole side
/// one pixel. nullopt when a side is 0, negative, not finite or over 1,000,001.
std::optional<CIImage> lanczosScaleTransform(const CIImage& image, float scale, float aspectRatio);

/// Filter "CICrop" with a rectangle from (0, 0), that is from the bottom left corner: removes rows at the
/// top and columns at the right. `image` is the output of lanczosScaleTransform. nullopt when no pixel is
/// left.
std::optional<CIImage> crop(const CIImage& image, CIExtent rectangle);

} // namespace kestrine
