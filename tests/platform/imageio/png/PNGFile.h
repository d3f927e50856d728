// PNGFile: makes PNG files of every kind with libpng.
#pragma once

#include "platform/host/Bytes.h"

#include <functional>
#include <png.h>

namespace kestrine::testing {

struct PNGFile {
    std::uint32_t width = 3, height = 2;
    int bitDepth = 8;
    int colorType = PNG_COLOR_TYPE_RGB;
    bool interlaced = false;
    /// The stored sample at (x, y, channel).
    std::function<unsigned(std::uint32_t x, std::uint32_t y, int channel)> sample = [](auto, auto, auto) {
        return 0u;
    };
    /// Adds chunks before the pixels.
    std::function<void(png_structp, png_infop)> before = [](auto, auto) {};
    /// Adds chunks after the pixels.
    std::function<void(png_structp)> after = [](auto) {};

    Bytes make() const;
};

/// A file with a pattern of many different samples, reduced to `bits` bits.
PNGFile patternPNG(int colorType, int bits);

extern const png_color pngPalette[4];
/// A file of indices into pngPalette.
PNGFile indexedPNG();

} // namespace kestrine::testing
