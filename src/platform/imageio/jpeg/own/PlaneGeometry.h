// PlaneGeometry: the number of samples of each component, at full size or reduced in the transform.
// Components can be reduced differently: a component stored at half the resolution needs no reduction for a
// picture of half size. libjpeg-turbo has the same rule, and both must give the same samples.
#pragma once

#include "platform/imageio/jpeg/own/FrameHeader.h"

namespace kestrine::jpeg {

struct PlaneGeometry {
    int blockSize = 8;                                  ///< side in samples of a decoded block: 8, 4, 2 or 1
    std::uint32_t width = 0, height = 0;                ///< in samples, without padding
    int horizontalExpansion = 1, verticalExpansion = 1; ///< pixels of the picture per sample
};

/// ceil(side * eighths / 8): the side of a reduced picture.
std::uint32_t reducedSide(std::uint32_t side, int eighths);

/// The geometry of component number `component` of a picture that is reduced to 8, 4, 2 or 1 `eighths`.
PlaneGeometry planeGeometry(const FrameHeader& header, std::size_t component, int eighths);

} // namespace kestrine::jpeg
