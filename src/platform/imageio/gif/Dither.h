// Dithering: shows a picture with few colours and without half-transparency. The error of each pixel is
// passed on to its neighbours, so that areas keep their mean colour and transparency.
#pragma once

#include "platform/imageio/gif/NearestColor.h"
#include "platform/imageio/gif/Palette.h"

#include <cstddef>
#include <vector>

namespace kestrine::gif {

/// Passes on errors with the weights of Floyd and Steinberg, every second row from right to left. An Error
/// can be added and multiplied by an int.
template <class Error>
class ErrorDiffusion {
public:
    explicit ErrorDiffusion(std::size_t width)
        : width_(static_cast<std::ptrdiff_t>(width)), pending_(width + 2) {}

    /// Calls visit(x, received) for each pixel of the next row. `received` is the error from the neighbours,
    /// in sixteenths of a level. `visit` returns the error to pass on, in whole levels.
    template <class Visit>
    void visitRow(Visit visit) {
        const std::ptrdiff_t step = leftwards_ ? -1 : 1;
        std::ptrdiff_t x = leftwards_ ? width_ : 1;
        Error ahead{}, below{}, behind{};
        for (std::ptrdiff_t n = 0; n < width_; ++n, x += step) {
            const Error error = visit(static_cast<std::size_t>(x - 1), pending_[x] + ahead);
            pending_[x - step] = behind + error * 3;
            behind = below + error * 5;
            below = error;
            ahead = error * 7;
        }
        pending_[x - step] = behind;
        leftwards_ = !leftwards_;
    }

private:
    const std::ptrdiff_t width_;
    std::vector<Error> pending_; ///< for the next row; the first and the last lie outside the picture
    bool leftwards_ = false;
};

/// Decides row by row, from the top, which pixels are shown. Fully transparent and opaque pixels do not
/// change.
class TransparencyDither {
public:
    explicit TransparencyDither(std::uint32_t width) : diffusion_(width) {}

    /// Sets the cover of the pixels from their alpha, 0 to 255.
    void decide(std::span<const std::uint8_t> alpha, Pixel* row);

private:
    ErrorDiffusion<int> diffusion_;
};

/// Turns rows of pixels, from the top, into indices of `palette`, which must outlive this.
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
