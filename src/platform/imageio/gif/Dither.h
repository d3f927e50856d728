// GIFDither: how a picture looks with few colours and without half-transparency. What a pixel loses its
// neighbours get, so that areas keep their colour.
#pragma once

#include "platform/imageio/gif/ErrorDiffusion.h"
#include "platform/imageio/gif/NearestColor.h"
#include "platform/imageio/gif/Palette.h"

namespace kestrine::gif {

/// Decides row by row, from the top, which pixels are shown. Absent and opaque ones stay so.
class TransparencyDither {
public:
    explicit TransparencyDither(std::uint32_t width) : diffusion_(width) {}

    /// Sets the cover of pixels from their alpha, 0 to 255.
    void decide(std::span<const std::uint8_t> alpha, Pixel* row);

private:
    ErrorDiffusion<int> diffusion_;
};

/// Turns rows of pixels, from the top, into indices of a palette.
class ColorDither {
public:
    ColorDither(const Palette& palette, std::uint32_t width);

    void place(const Pixel* row, std::span<std::uint8_t> indices);

private:
    struct Error {
        int red, green, blue;

        Error operator+(const Error& o) const { return {red + o.red, green + o.green, blue + o.blue}; }
        Error operator*(int n) const { return {red * n, green * n, blue * n}; }
    };

    const Palette& palette_;
    NearestColor nearest_;
    ErrorDiffusion<Error> diffusion_;
};

} // namespace kestrine::gif
