#include "platform/coregraphics/Premultiplication.h"

#include "platform/host/Bytes.h"

#include <array>
#include <gtest/gtest.h>

namespace kestrine {

TEST(Premultiplication, isUndoneByDividingColourByAlphaWhichLeavesNoneWhereAlphaIsZero) {
    Bytes pixels = {64, 128, 0, 128, 9, 9, 9, 0, 200, 100, 1, 255};
    undoPremultiplication({3, 1, ColorModel::rgb, true}, pixels);
    EXPECT_EQ(pixels, (Bytes{128, 255, 0, 128, 0, 0, 0, 0, 200, 100, 1, 255}));
}

TEST(Premultiplication, thatIsNotPossibleGivesTheBrightestColour) {
    Bytes pixels = {200, 100};
    undoPremultiplication({1, 1, ColorModel::gray, true}, pixels);
    EXPECT_EQ(pixels, (Bytes{255, 100}));
}

TEST(Premultiplication, isUndoneWith16Bits) {
    std::array<std::uint16_t, 2> pixel = {1000, 2000};
    undoPremultiplication({1, 1, ColorModel::gray, true, SampleDepth::bits16},
                          {reinterpret_cast<std::uint8_t*>(pixel.data()), sizeof pixel});
    EXPECT_EQ(pixel, (std::array<std::uint16_t, 2>{32768, 2000}));
}

} // namespace kestrine
