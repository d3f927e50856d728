#include "kestrinectl/compare/LumaPlane.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>

namespace kestrine {
namespace {

using testing::ElementsAre;
using testing::FloatNear;

PixelBuffer pixelsOf(const RowFormat& format, const std::vector<std::uint16_t>& samples) {
    PixelBuffer pixels(format);
    if (format.depth == SampleDepth::bits16)
        std::memcpy(pixels.bytes.data(), samples.data(), pixels.bytes.size());
    else
        pixels.bytes.assign(samples.begin(), samples.end());
    return pixels;
}

TEST(LumaPlane, coloursHaveTheWeightsOfBT601) {
    const LumaPlane plane =
        lumaOf(pixelsOf({4, 1, ColorModel::rgb}, {255, 0, 0, 0, 255, 0, 0, 0, 255, 255, 255, 255}));
    EXPECT_THAT(plane.samples, ElementsAre(FloatNear(76.245F, 1e-3F), FloatNear(149.685F, 1e-3F),
                                           FloatNear(29.07F, 1e-3F), FloatNear(255, 1e-3F)));
}

TEST(LumaPlane, greyStaysAsItIsRowByRow) {
    const LumaPlane plane = lumaOf(pixelsOf({2, 2, ColorModel::gray}, {1, 2, 3, 4}));
    EXPECT_EQ(plane.width, 2U);
    EXPECT_EQ(plane.height, 2U);
    EXPECT_EQ(plane.row(1)[0], 3);
}

TEST(LumaPlane, sixteenBitsHaveTheSameScale) {
    const LumaPlane plane =
        lumaOf(pixelsOf({2, 1, ColorModel::gray, false, SampleDepth::bits16}, {65535, 257}));
    EXPECT_THAT(plane.samples, ElementsAre(FloatNear(255, 1e-3F), FloatNear(1, 1e-3F)));
}

} // namespace
} // namespace kestrine
