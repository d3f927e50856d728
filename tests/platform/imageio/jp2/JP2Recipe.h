// JP2Recipe: makes JPEG 2000 files with OpenJPEG.
#pragma once

#include "platform/coregraphics/PixelBuffer.h"

#include <openjpeg-2.5/openjpeg.h>

namespace kestrine::testing {

struct JP2Recipe {
    PixelBuffer pixels;
    bool isBare = false;             ///< a codestream without a container
    std::uint32_t tile = 0;          ///< the sides of a tile; 0 for no tiles
    std::uint32_t left = 0, top = 0; ///< where the picture begins on the grid
    int resolutions = 4;
    float rate = 0; ///< by which factor the file is smaller; 0 for lossless
    OPJ_COLOR_SPACE space = OPJ_CLRSPC_SRGB;
    Bytes icc = {};
    unsigned bits = 0; ///< of each sample; 0 for those of the pixels, from which the upper bits are dropped
    bool isSigned = false; ///< stored minus half of the range
    bool marksAlpha = true;

    /// The file; empty if the library fails.
    Bytes make() const;
};

} // namespace kestrine::testing
