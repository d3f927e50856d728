#include "platform/imageio/jpeg/own/PlaneGeometry.h"

namespace kestrine::jpeg {

namespace {

std::uint32_t scaled(std::uint32_t side, int numerator, int denominator) {
    const auto top = static_cast<std::uint64_t>(numerator), bottom = static_cast<std::uint64_t>(denominator);
    return static_cast<std::uint32_t>((side * top + bottom - 1) / bottom);
}

} // namespace

std::uint32_t reducedSide(std::uint32_t side, int eighths) { return scaled(side, eighths, 8); }

PlaneGeometry planeGeometry(const FrameHeader& header, std::size_t component, int eighths) {
    const Component& factors = header.components[component];
    const int horizontal = header.horizontalFactor() * eighths, vertical = header.verticalFactor() * eighths;
    PlaneGeometry plane;
    plane.blockSize = eighths;
    // If the samples would be expanded in both directions, the component is reduced less instead.
    while (plane.blockSize < 8 && horizontal % (factors.horizontal * plane.blockSize * 2) == 0
           && vertical % (factors.vertical * plane.blockSize * 2) == 0)
        plane.blockSize *= 2;
    plane.width = scaled(header.width, factors.horizontal * plane.blockSize, header.horizontalFactor() * 8);
    plane.height = scaled(header.height, factors.vertical * plane.blockSize, header.verticalFactor() * 8);
    plane.horizontalExpansion = horizontal / (factors.horizontal * plane.blockSize);
    plane.verticalExpansion = vertical / (factors.vertical * plane.blockSize);
    return plane;
}

} // namespace kestrine::jpeg
