#include "platform/coregraphics/CodingPoints.h"

#include <gtest/gtest.h>

namespace kestrine {

namespace {

std::optional<ColorMatrix> matrixNumbered(std::uint16_t number, std::uint16_t primaries = 1) {
    return matrixOf({primaries, 2, number, true});
}

/// The colour of Y, Cb and Cr.
std::array<double, 3> colorOf(const ColorMatrix& matrix, double y, double cb, double cr) {
    std::array<double, 3> color{};
    for (std::size_t i = 0; i < 3; ++i)
        color[i] = matrix[i][0] * y + matrix[i][1] * cb + matrix[i][2] * cr;
    return color;
}

} // namespace

TEST(CodingPoints, matricesInvertTheWeightsOfRedGreenAndBlue) {
    struct Known {
        std::uint16_t number;
        double red, blue;
    };
    for (const auto& [number, red, blue] :
         {Known{1, 0.2126, 0.0722}, Known{2, 0.299, 0.114}, Known{4, 0.30, 0.11}, Known{5, 0.299, 0.114},
          Known{6, 0.299, 0.114}, Known{7, 0.212, 0.087}, Known{9, 0.2627, 0.0593}}) {
        const double r = 0.3, g = 0.6, b = 0.8, y = red * r + (1 - red - blue) * g + blue * b;
        const auto color =
            colorOf(*matrixNumbered(number), y, (b - y) / 2 / (1 - blue), (r - y) / 2 / (1 - red));
        EXPECT_NEAR(color[0], r, 1e-12) << number;
        EXPECT_NEAR(color[1], g, 1e-12) << number;
        EXPECT_NEAR(color[2], b, 1e-12) << number;
    }
}

TEST(CodingPoints, theIdentityHasGreenFirst) {
    const auto color = colorOf(*matrixNumbered(0), 0.1, 0.2, 0.3);
    EXPECT_EQ(color, (std::array{0.3, 0.1, 0.2}));
}

TEST(CodingPoints, yCgCoIsInverted) {
    const double r = 0.3, g = 0.6, b = 0.8;
    const auto color = colorOf(*matrixNumbered(8), (r + 2 * g + b) / 4, (2 * g - r - b) / 4, (r - b) / 2);
    EXPECT_NEAR(color[0], r, 1e-12);
    EXPECT_NEAR(color[1], g, 1e-12);
    EXPECT_NEAR(color[2], b, 1e-12);
}

TEST(CodingPoints, weightsCanFollowFromThePrimaries) {
    const ColorMatrix derived = *matrixNumbered(12, 9), bt2020 = *matrixNumbered(9);
    const ColorMatrix unnamed = *matrixNumbered(12, 1), bt709 = *matrixNumbered(1);
    for (std::size_t i = 0; i < 3; ++i)
        for (std::size_t k = 0; k < 3; ++k) {
            EXPECT_NEAR(derived[i][k], bt2020[i][k], 5e-4);
            EXPECT_NEAR(unnamed[i][k], bt709[i][k], 5e-4);
        }
}

TEST(CodingPoints, matricesThatAreNotLinearAreNotSupported) {
    for (const std::uint16_t number : std::initializer_list<std::uint16_t>{10, 11, 13, 14, 15, 255})
        EXPECT_FALSE(matrixNumbered(number)) << number;
}

TEST(CodingPoints, sRGBNeedsNoProfile) {
    for (const std::uint16_t transfer : std::initializer_list<std::uint16_t>{1, 2, 6, 13, 14, 15, 16, 18})
        for (const std::uint16_t primaries : std::initializer_list<std::uint16_t>{1, 2}) {
            EXPECT_FALSE(profileOf({primaries, transfer, 6, true}, ColorModel::rgb));
            EXPECT_FALSE(profileOf({primaries, transfer, 6, true}, ColorModel::gray));
        }
}

TEST(CodingPoints, otherPrimariesGiveAProfileWithTheCurveOfSRGB) {
    const auto displayP3 = profileOf({12, 13, 6, true}, ColorModel::rgb);
    const auto bt2020 = profileOf({9, 16, 9, true}, ColorModel::rgb);
    ASSERT_TRUE(displayP3 && bt2020);
    EXPECT_FALSE(*displayP3 == *bt2020);
    EXPECT_EQ(*displayP3, *profileOf({12, 1, 1, false}, ColorModel::rgb));
    EXPECT_FALSE(profileOf({12, 13, 6, true}, ColorModel::gray));
}

TEST(CodingPoints, powersGiveAProfileOfTheirOwn) {
    const auto rgb = profileOf({1, 4, 6, true}, ColorModel::rgb);
    const auto gray = profileOf({1, 8, 6, true}, ColorModel::gray);
    ASSERT_TRUE(rgb && gray);
    EXPECT_EQ(*rgb, *ColorProfile::fromGamma(2.2, sRGBChromaticities, ColorModel::rgb));
    EXPECT_EQ(*gray, *ColorProfile::fromGamma(1, sRGBChromaticities, ColorModel::gray));
}

} // namespace kestrine
