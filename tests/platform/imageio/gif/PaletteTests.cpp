#include "platform/imageio/gif/Palette.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <random>

namespace kestrine::testing {

namespace {

/// `count` different colours, the first of them the most frequent.
gif::Histogram histogramOf(unsigned count) {
    gif::Histogram histogram;
    for (unsigned i = 0; i < count; ++i)
        for (unsigned n = i; n <= count && n < i + 3; ++n)
            histogram.add({static_cast<std::uint8_t>(i), static_cast<std::uint8_t>(i >> 8),
                           static_cast<std::uint8_t>(7 * i)});
    return histogram;
}

Bytes grayTable(unsigned count) {
    Bytes table;
    for (unsigned i = 0; i < count; ++i)
        table.insert(table.end(), 3, static_cast<std::uint8_t>(i));
    return table;
}

bool holds(const gif::Palette& palette, gif::Color color) {
    return std::ranges::find(palette.colors, color) != palette.colors.end();
}

} // namespace

TEST(GIFHistogram, fewColorsAreCountedExactly) {
    gif::Histogram histogram;
    for (int i = 0; i < 10; ++i)
        histogram.add({1, 2, static_cast<std::uint8_t>(i % 2)});
    histogram.add({255, 255, 255});
    ASSERT_EQ(histogram.entries().size(), 3u);
    EXPECT_TRUE(histogram.isExact());
    EXPECT_EQ(histogram.entries()[1].pixels, 5u);
    EXPECT_EQ(histogram.entries()[1].mean(), (gif::Color{1, 2, 1}));
    EXPECT_EQ(histogram.positionOf({255, 255, 255}), 2u);
}

TEST(GIFHistogram, manyColorsAreMergedWithoutLosingPixels) {
    gif::Histogram histogram;
    std::mt19937 random(1);
    std::array<std::uint64_t, 3> sums{};
    for (int i = 0; i < 100000; ++i) {
        const gif::Color color = {static_cast<std::uint8_t>(random()), static_cast<std::uint8_t>(random()),
                                  static_cast<std::uint8_t>(random())};
        histogram.add(color);
        sums = {sums[0] + color.red, sums[1] + color.green, sums[2] + color.blue};
    }
    EXPECT_FALSE(histogram.isExact());
    EXPECT_LE(histogram.entries().size(), 5000u);
    std::uint64_t pixels = 0;
    for (const gif::Histogram::Entry& entry : histogram.entries()) {
        pixels += entry.pixels;
        for (std::size_t c = 0; c < 3; ++c)
            sums[c] -= entry.sums[c];
    }
    EXPECT_EQ(pixels, 100000u);
    EXPECT_EQ(sums, (std::array<std::uint64_t, 3>{}));
}

TEST(GIFPalette, aPictureOfFewColorsKeepsAllOfThem) {
    for (const unsigned count : {1u, 2u, 3u, 255u, 256u}) {
        const gif::Histogram histogram = histogramOf(count);
        const gif::Palette palette = paletteOfPicture(histogram, false);
        EXPECT_EQ(palette.colors.size(), count);
        EXPECT_FALSE(palette.transparent.has_value());
        EXPECT_EQ(exactIndices(palette, histogram).size(), count);
    }
}

TEST(GIFPalette, transparencyTakesOneMoreEntry) {
    const gif::Palette palette = paletteOfPicture(histogramOf(255), true);
    EXPECT_EQ(palette.colors.size(), 256u);
    EXPECT_EQ(palette.transparent, 255);
    EXPECT_EQ(exactIndices(palette, histogramOf(255)).size(), 255u);
}

TEST(GIFPalette, manyColorsFillTheWholePalette) {
    for (const unsigned count : {257u, 1000u, 4000u, 40000u})
        for (const bool needsTransparency : {false, true}) {
            const gif::Histogram histogram = histogramOf(count);
            const gif::Palette palette = paletteOfPicture(histogram, needsTransparency);
            EXPECT_EQ(palette.colors.size(), 256u);
            EXPECT_EQ(palette.transparent.has_value(), needsTransparency);
            EXPECT_TRUE(exactIndices(palette, histogram).empty());
        }
}

TEST(GIFPalette, aFullyTransparentPictureHasOnlyTheTransparentEntry) {
    const gif::Palette palette = paletteOfPicture(gif::Histogram{}, true);
    EXPECT_EQ(palette.colors.size(), 1u);
    EXPECT_EQ(palette.transparent, 0);
}

TEST(GIFPalette, theColorOfALargeFlatAreaIsKeptExactly) {
    gif::Histogram histogram;
    std::mt19937 random(2);
    for (int i = 0; i < 30000; ++i) {
        histogram.add({201, 187, 93});
        histogram.add({static_cast<std::uint8_t>(random()), static_cast<std::uint8_t>(random()), 40});
    }
    EXPECT_TRUE(holds(paletteOfPicture(histogram, false), {201, 187, 93}));
}

TEST(GIFPalette, aGivenTableIsNotChanged) {
    const gif::Palette palette = paletteOfTable(grayTable(5), histogramOf(300), false);
    ASSERT_EQ(palette.colors.size(), 5u);
    for (std::uint8_t i = 0; i < 5; ++i)
        EXPECT_EQ(palette.colors[i], (gif::Color{i, i, i}));
    EXPECT_FALSE(palette.transparent.has_value());
}

TEST(GIFPalette, transparencyIsAddedToATableWithFewerThan256Colors) {
    EXPECT_EQ(paletteOfTable(grayTable(5), histogramOf(9), true).transparent, 5);
    EXPECT_EQ(paletteOfTable(grayTable(255), histogramOf(9), true).transparent, 255);
}

TEST(GIFPalette, transparencyReplacesTheLeastUsedColorOfAFullTable) {
    gif::Histogram histogram;
    for (unsigned i = 0; i < 256; ++i)
        for (unsigned n = 0; n < (i == 77 ? 1 : 2); ++n)
            histogram.add(
                {static_cast<std::uint8_t>(i), static_cast<std::uint8_t>(i), static_cast<std::uint8_t>(i)});
    const gif::Palette palette = paletteOfTable(grayTable(256), histogram, true);
    EXPECT_EQ(palette.colors.size(), 256u);
    EXPECT_EQ(palette.transparent, 77);
    EXPECT_EQ(palette.colors[77], (gif::Color{77, 77, 77}));
}

TEST(GIFPalette, aColorTableHasCompleteColorsAndAtMost256) {
    for (const std::size_t length : {3u, 6u, 765u, 768u})
        EXPECT_TRUE(gif::isColorTable(Bytes(length))) << length;
    for (const std::size_t length : {0u, 1u, 4u, 767u, 769u, 771u})
        EXPECT_FALSE(gif::isColorTable(Bytes(length))) << length;
}

} // namespace kestrine::testing
