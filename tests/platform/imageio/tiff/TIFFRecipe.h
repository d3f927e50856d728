// TIFFRecipe: makes TIFF files of every kind with libtiff.
#pragma once

#include "platform/host/Bytes.h"

#include <functional>
#include <tiffio.h>

namespace kestrine::testing {

/// One page.
struct TIFFRecipe {
    std::uint32_t width = 19, height = 11;
    std::uint16_t bits = 8, samples = 3;
    std::uint16_t photometric = PHOTOMETRIC_RGB;
    std::uint16_t compression = COMPRESSION_NONE;
    std::uint16_t planar = PLANARCONFIG_CONTIG;
    std::uint32_t rowsPerStrip = 4;
    std::uint32_t tileWidth = 0, tileHeight = 0; ///< 0: strips
    std::vector<std::uint16_t> extraSamples = {};
    /// The stored sample (x, y, s) as a number of `bits` bits, also for floats.
    std::function<std::uint32_t(std::uint32_t x, std::uint32_t y, unsigned s)> sample =
        [](auto x, auto y, auto s) { return 13 * x + 29 * y + 71 * s; };
    std::function<void(TIFF*)> tags = [](TIFF*) {};
    std::vector<TIFFRecipe> subPages = {}; ///< of this page
    Bytes rawStrip = {};                   ///< if not empty, the only strip as it is stored

    /// The stored sample, cut to its bits.
    std::uint32_t stored(std::uint32_t x, std::uint32_t y, unsigned s) const {
        return bits == 32 ? sample(x, y, s) : sample(x, y, s) % (1u << bits);
    }
};

/// A file of these pages. `mode` is libtiff's: "wb" big-endian, "wl8" little-endian and big, ...
Bytes makeTIFF(const std::vector<TIFFRecipe>& pages, const char* mode = "wl");
Bytes makeTIFF(const TIFFRecipe& page, const char* mode = "wl");

} // namespace kestrine::testing
