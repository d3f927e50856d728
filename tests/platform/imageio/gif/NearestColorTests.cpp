#include "platform/imageio/gif/NearestColor.h"

#include <cmath>
#include <gtest/gtest.h>
#include <random>

namespace kestrine::testing {

namespace {

std::vector<gif::Color> randomColors(std::size_t count, unsigned range) {
    std::mt19937 random(static_cast<unsigned>(count + range));
    std::vector<gif::Color> colors(count);
    const auto level = [&] { return static_cast<std::uint8_t>(random() % range); };
    for (gif::Color& color : colors)
        color = {level(), level(), level()};
    return colors;
}

int distance(gif::Color a, gif::Color b) {
    const int red = a.red - b.red, green = a.green - b.green, blue = a.blue - b.blue;
    return gif::colorWeights[0] * red * red + gif::colorWeights[1] * green * green
           + gif::colorWeights[2] * blue * blue;
}

std::size_t firstNearest(const std::vector<gif::Color>& colors, gif::Color color) {
    return static_cast<std::size_t>(
        std::ranges::min_element(colors, {}, [&](gif::Color other) { return distance(other, color); })
        - colors.begin());
}

} // namespace

TEST(GIFNearestColor, amongUpToFourColorsTheFirstNearestIsFound) {
    for (std::size_t count = 1; count <= 4; ++count) {
        const std::vector<gif::Color> colors = randomColors(count, 256);
        gif::NearestColor nearest(colors);
        for (const gif::Color color : randomColors(20000, 256))
            ASSERT_EQ(nearest.indexOf(color), firstNearest(colors, color));
    }
}

TEST(GIFNearestColor, amongManyColorsTheResultIsNearlyTheNearest) {
    const std::vector<gif::Color> colors = randomColors(256, 256);
    gif::NearestColor nearest(colors);
    int exact = 0;
    for (const gif::Color color : randomColors(20000, 256)) {
        const int found = distance(colors[nearest.indexOf(color)], color);
        const int least = distance(colors[firstNearest(colors, color)], color);
        exact += found == least;
        ASSERT_LE(std::sqrt(found), std::sqrt(least) + 10); // a cell is 8 levels wide, weighted about 3
    }
    EXPECT_GT(exact, 19900);
}

TEST(GIFNearestColor, amongCrowdedColorsTheResultIsFartherByLessThanACell) {
    const std::vector<gif::Color> colors = randomColors(256, 24);
    gif::NearestColor nearest(colors);
    for (const gif::Color color : randomColors(20000, 24))
        ASSERT_LE(std::sqrt(distance(colors[nearest.indexOf(color)], color)),
                  std::sqrt(distance(colors[firstNearest(colors, color)], color)) + 24);
}

TEST(GIFNearestColor, amongEqualColorsTheFirstIsFound) {
    gif::NearestColor nearest(std::vector<gif::Color>{{9, 9, 9}, {200, 0, 0}, {200, 0, 0}, {9, 9, 9}});
    EXPECT_EQ(nearest.indexOf({199, 1, 0}), 1);
    EXPECT_EQ(nearest.indexOf({10, 8, 9}), 0);
}

TEST(GIFNearestColor, theSkippedColorIsNeverFound) {
    for (const std::uint8_t skipped : std::initializer_list<std::uint8_t>{0, 7, 255}) {
        std::vector<gif::Color> colors = randomColors(256, 256);
        gif::NearestColor nearest(colors, skipped);
        EXPECT_NE(nearest.indexOf(colors[skipped]), skipped);
        for (const gif::Color color : randomColors(5000, 256))
            ASSERT_NE(nearest.indexOf(color), skipped);
    }
}

} // namespace kestrine::testing
