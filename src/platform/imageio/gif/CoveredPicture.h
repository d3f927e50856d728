// CoveredPicture: a whole picture in memory, because the GIF encoder needs the pixels twice: first to choose
// colours, then to assign them.
#pragma once

#include <cstdint>
#include <vector>

namespace kestrine::gif {

struct Color {
    std::uint8_t red, green, blue;

    bool operator==(const Color&) const = default;
};

/// How a pixel is written. GIF has no half-transparent pixels.
enum class Cover : std::uint8_t {
    absent, ///< transparent, and not shown
    hole,   ///< half-transparent in the source and dithered away: not shown
    opaque, ///< shown with its colour
};

struct Pixel {
    Color color;
    Cover cover;
};

struct CoveredPicture {
    std::uint32_t width, height;
    std::vector<Pixel> pixels; ///< row by row, from the top

    const Pixel* row(std::size_t y) const { return pixels.data() + y * width; }
    Pixel* row(std::size_t y) { return pixels.data() + y * width; }
};

} // namespace kestrine::gif
