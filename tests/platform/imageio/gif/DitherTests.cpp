#include "platform/imageio/gif/Dither.h"

#include <gtest/gtest.h>

namespace kestrine::testing {

namespace {

constexpr std::uint32_t width = 64;

/// How many of width x width pixels with that alpha are shown.
int shownOf(std::uint8_t alpha) {
    gif::TransparencyDither dither(width);
    const Bytes row(width, alpha);
    std::vector<gif::Pixel> pixels(width);
    std::ptrdiff_t shown = 0;
    for (std::uint32_t y = 0; y < width; ++y) {
        dither.decide(row, pixels.data());
        shown += std::ranges::count(pixels, gif::Cover::opaque, &gif::Pixel::cover);
    }
    return static_cast<int>(shown);
}

/// Mean red level of an area of one colour after dithering, without holes.
double meanRed(const gif::Palette& palette, gif::Color color, bool withHoles) {
    gif::ColorDither dither(palette, width);
    std::vector<gif::Pixel> row(width);
    Bytes indices(width);
    double sum = 0, count = 0;
    for (std::uint32_t y = 0; y < width; ++y) {
        for (std::uint32_t x = 0; x < width; ++x)
            row[x] = {color, withHoles && (x + y) % 2 == 0 ? gif::Cover::hole : gif::Cover::opaque};
        dither.place(row.data(), indices);
        for (const std::uint8_t index : indices)
            if (index != palette.transparent) {
                sum += palette.colors[index].red;
                ++count;
            }
    }
    return sum / count;
}

const gif::Palette threeGrays = {{{0, 0, 0}, {40, 40, 40}, {80, 80, 80}, {}}, 3};

} // namespace

TEST(GIFTransparencyDither, anAreaKeepsItsTransparency) {
    for (const std::uint8_t alpha : std::initializer_list<std::uint8_t>{1, 20, 64, 128, 200, 254})
        EXPECT_NEAR(shownOf(alpha), alpha / 255.0 * width * width, 0.01 * width * width) << int{alpha};
}

TEST(GIFTransparencyDither, transparentAndOpaquePixelsDoNotChange) {
    gif::TransparencyDither dither(width);
    std::vector<gif::Pixel> pixels(width);
    Bytes alpha(width);
    for (std::uint32_t x = 0; x < width; ++x)
        alpha[x] = x % 3 == 0 ? 0 : x % 3 == 1 ? 255 : 127;
    for (int y = 0; y < 64; ++y) {
        dither.decide(alpha, pixels.data());
        for (std::uint32_t x = 0; x < width; ++x) {
            EXPECT_TRUE(alpha[x] != 0 || pixels[x].cover == gif::Cover::absent);
            EXPECT_TRUE(alpha[x] != 255 || pixels[x].cover == gif::Cover::opaque);
        }
    }
}

TEST(GIFColorDither, anAreaKeepsItsMeanColor) {
    for (const std::uint8_t gray : std::initializer_list<std::uint8_t>{0, 1, 13, 20, 40, 47, 66, 80})
        EXPECT_NEAR(meanRed(threeGrays, {gray, gray, gray}, false), gray, 0.7) << int{gray};
}

TEST(GIFColorDither, anAreaWithHolesKeepsItsMeanColor) {
    for (const std::uint8_t gray : std::initializer_list<std::uint8_t>{13, 20, 47, 66})
        EXPECT_NEAR(meanRed(threeGrays, {gray, gray, gray}, true), gray, 1.5) << int{gray};
}

TEST(GIFColorDither, aColorOfThePaletteIsNotDithered) {
    gif::ColorDither dither(threeGrays, width);
    Bytes indices(width);
    dither.place(std::vector<gif::Pixel>(width, {{40, 40, 40}, gif::Cover::opaque}).data(), indices);
    EXPECT_EQ(indices, Bytes(width, 1));
}

TEST(GIFColorDither, aColorOutsideThePaletteDoesNotChangeItsNeighbours) {
    gif::ColorDither dither(threeGrays, width);
    std::vector<gif::Pixel> row(width, {{255, 255, 255}, gif::Cover::opaque});
    std::fill(row.begin() + width / 2, row.end(), gif::Pixel{{0, 0, 0}, gif::Cover::opaque});
    Bytes indices(width);
    for (int y = 0; y < 32; ++y)
        dither.place(row.data(), indices);
    const auto wrong =
        std::count_if(indices.begin() + width / 2, indices.end(), [](auto index) { return index != 0; });
    EXPECT_LE(wrong, 2);
    EXPECT_EQ(std::count(indices.begin(), indices.begin() + width / 2, 2), width / 2);
}

} // namespace kestrine::testing
