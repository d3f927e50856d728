// GIFPicture: a picture as the GIF encoder holds it, since it needs the pixels twice: for choosing colours,
// then for placing them.
#pragma once

#include <cstdint>
#include <vector>

namespace kestrine {

struct GIFColor {
    std::uint8_t red, green, blue;

    bool operator==(const GIFColor&) const = default;
};

/// What becomes of a pixel. A GIF knows no half-transparent pixels.
enum class GIFCover : std::uint8_t {
    absent, ///< transparent in the source
    hole,   ///< half-transparent in the source, and shown as transparent
    opaque, ///< shown
};

struct GIFPixel {
    GIFColor color;
    GIFCover cover;
};

struct GIFPicture {
    std::uint32_t width, height;
    std::vector<GIFPixel> pixels; ///< row by row from the top

    const GIFPixel* row(std::size_t y) const { return pixels.data() + y * width; }
    GIFPixel* row(std::size_t y) { return pixels.data() + y * width; }
};

} // namespace kestrine
