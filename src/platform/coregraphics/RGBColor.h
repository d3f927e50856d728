// RGBColor: an opaque colour in sRGB.
#pragma once

#include <cstdint>

namespace kestrine {

struct RGBColor {
    std::uint8_t red = 0, green = 0, blue = 0;

    bool isGray() const { return red == green && green == blue; }
    bool operator==(const RGBColor&) const = default;
};

inline constexpr RGBColor white = {255, 255, 255};

} // namespace kestrine
