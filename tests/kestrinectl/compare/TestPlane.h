// Planes of luma for tests.
#pragma once

#include "kestrinectl/compare/LumaPlane.h"

#include <random>

namespace kestrine {

/// A plane of `value`.
inline LumaPlane flatPlane(std::uint32_t width, std::uint32_t height, float value) {
    return {width, height, std::vector<float>(std::size_t{width} * height, value)};
}

/// A plane of noise, always the same for the same `seed`.
inline LumaPlane noisyPlane(std::uint32_t width, std::uint32_t height, unsigned seed) {
    LumaPlane plane = flatPlane(width, height, 0);
    std::minstd_rand numbers(seed);
    for (float& sample : plane.samples)
        sample = static_cast<float>(numbers() % 256);
    return plane;
}

} // namespace kestrine
