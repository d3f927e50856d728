// ErrorDiffusion: carries what rounding takes from a pixel on to its neighbours, with the weights of Floyd
// and Steinberg, every other row from the right.
#pragma once

#include <cstddef>
#include <vector>

namespace kestrine::gif {

/// Error is a number, or a few side by side: it can be added and multiplied by an int.
template <class Error>
class ErrorDiffusion {
public:
    explicit ErrorDiffusion(std::size_t width)
        : width_(static_cast<std::ptrdiff_t>(width)), pending_(width + 2) {}

    /// Visits the pixels of the next row. visit(x, received) is told what the pixel received, in sixteenths,
    /// and answers what it passes on, in whole levels.
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

} // namespace kestrine::gif
