// JXLRecipe: makes JPEG XL files with libjxl.
#pragma once

#include "platform/coregraphics/PixelBuffer.h"

#include <jxl/encode.h>

namespace kestrine::testing {

struct JXLRecipe {
    PixelBuffer pixels;
    bool isLossless = true;
    int orientation = 1; ///< 1 to 8, as in EXIF
    int frames = 1;      ///< all with the same pixels
    Bytes icc;           ///< empty for `color`
    JxlColorEncoding color = sRGB(false);
    Bytes exif; ///< the content of a box; empty for none
    bool isCompressedBox = false;

    static JxlColorEncoding sRGB(bool isGray);

    /// The file; empty if the library fails.
    Bytes make() const;
};

} // namespace kestrine::testing
