// GIFDither: how a picture looks with few colours and without half-transparency. What a pixel loses its
// neighbours get, so that areas keep their colour.
#pragma once

#include "platform/imageio/ErrorDiffusion.h"
#include "platform/imageio/GIFNearestColor.h"
#include "platform/imageio/GIFPalette.h"

namespace kestrine {

/// Decides row by row, from the top, which pixels are shown. Absent and opaque ones stay so.
class GIFTransparencyDither {
public:
    explicit GIFTransparencyDither(std::uint32_t width) : diffusion_(width) {}

    /// Sets the cover of pixels from their alpha, 0 to 255.
    void decide(std::span<const std::uint8_t> alpha, GIFPixel* row);

private:
    ErrorDiffusion<int> diffusion_;
};

/// Turns rows of pixels, from the top, into indices of a palette.
class GIFColorDither {
public:
    GIFColorDither(const GIFPalette& palette, std::uint32_t width);

    void place(const GIFPixel* row, std::span<std::uint8_t> indices);

private:
    struct Error {
        int red, green, blue;

        Error operator+(const Error& o) const { return {red + o.red, green + o.green, blue + o.blue}; }
        Error operator*(int n) const { return {red * n, green * n, blue * n}; }
    };

    const GIFPalette& palette_;
    GIFNearestColor nearest_;
    ErrorDiffusion<Error> diffusion_;
};

} // namespace kestrine
