// LumaPlane: how bright the pixels of a picture are.
#pragma once

#include "platform/coregraphics/PixelBuffer.h"

#include <vector>

namespace kestrine {

struct LumaPlane {
    std::uint32_t width = 0, height = 0;
    std::vector<float> samples; ///< row by row; 0 is black and 255 is white

    const float* row(std::size_t y) const { return samples.data() + y * width; }
};

/// The luma Y' of ITU-R BT.601, the weights with which structural similarity is usually measured. `pixels`
/// are opaque; their colour counts as sRGB.
LumaPlane lumaOf(const PixelBuffer& pixels);

} // namespace kestrine
