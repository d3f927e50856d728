// CoveredPicture: a picture as the GIF encoder holds it, since it needs the pixels twice: for choosing colours,
// then for placing them.
#pragma once

#include <cstdint>
#include <vector>

namespace kestrine::gif {

struct Color {
    std::uint8_t red, green, blue;

    bool operator==(const Color&) const = default;
};

/// What becomes of a pixel. A GIF knows no half-transparent pixels.
enum class Cover : std::uint8_t {
    absent, ///< transparent in the source
    hole,   ///< half-transparent in the source, and shown as transparent
    opaque, ///< shown
};

struct Pixel {
    Color color;
    Cover cover;
};

struct CoveredPicture {
    std::uint32_t width, height;
    std::vector<Pixel> pixels; ///< row by row from the top

    const Pixel* row(std::size_t y) const { return pixels.data() + y * width; }
    Pixel* row(std::size_t y) { return pixels.data() + y * width; }
};

} // namespace kestrine::gif
