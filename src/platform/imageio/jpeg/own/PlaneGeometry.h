// PlaneGeometry: how many samples the components of a picture have at full size and reduced in the transform.
// Components are not all reduced alike: what a file stores at half the resolution needs no reduction for a
// picture of half size. The general library has the same rule, and the same samples must come out.
#pragma once

#include "platform/imageio/jpeg/own/FrameHeader.h"

namespace kestrine::jpeg {

struct PlaneGeometry {
    int blockSize = 8;                                  ///< side of the square a block becomes: 8, 4, 2 or 1
    std::uint32_t width = 0, height = 0;                ///< samples that count
    int horizontalExpansion = 1, verticalExpansion = 1; ///< pixels of the picture for a sample
};

/// ceil(side * eighths / 8): the side of a reduced picture.
std::uint32_t reducedSide(std::uint32_t side, int eighths);

/// Of component number `component`, in a picture reduced to 8, 4, 2 or 1 `eighths`.
PlaneGeometry planeGeometry(const FrameHeader& header, std::size_t component, int eighths);

} // namespace kestrine::jpeg
