#include "models/PixelSize.h"

#include <gtest/gtest.h>

namespace kestrine {
namespace {

using Rule = PixelSize::Rule;

struct Sides {
    std::uint32_t width, height;
    bool operator==(const Sides&) const = default;
};

Sides sidesFor(const PixelSize& size, std::uint32_t width, std::uint32_t height, bool enlarges = true) {
    const PixelGeometry geometry = geometryFor(size, width, height, enlarges);
    return {geometry.x.outSize, geometry.y.outSize};
}

TEST(PixelSize, givesTheNamedSideExactlyAndRoundsTheOther) {
    EXPECT_EQ(sidesFor({Rule::longest, 1200}, 6000, 4000), (Sides{1200, 800}));
    EXPECT_EQ(sidesFor({Rule::longest, 1200}, 4000, 6000), (Sides{800, 1200}));
    EXPECT_EQ(sidesFor({Rule::longest, 100}, 300, 201), (Sides{100, 67}));
    EXPECT_EQ(sidesFor({Rule::width, 100}, 300, 199), (Sides{100, 66}));
    EXPECT_EQ(sidesFor({Rule::height, 0, 100}, 300, 200), (Sides{150, 100}));
    EXPECT_EQ(sidesFor({Rule::percent, 12.5}, 300, 200), (Sides{38, 25}));
    EXPECT_EQ(sidesFor({Rule::stretch, 70, 30}, 300, 200), (Sides{70, 30}));
}

TEST(PixelSize, keepsAtLeastOnePixel) {
    EXPECT_EQ(sidesFor({Rule::longest, 10}, 100000, 3), (Sides{10, 1}));
    EXPECT_EQ(sidesFor({Rule::percent, 0.001}, 300, 200), (Sides{1, 1}));
}

TEST(PixelSize, ofAnEndlessResultStaysANumber) {
    EXPECT_EQ(sidesFor({Rule::width, 1'000'000}, 1, 1'000'000), (Sides{1'000'000, 4'000'000'000}));
}

TEST(PixelSize, insideFitsTheBoxInBothOrientations) {
    EXPECT_EQ(sidesFor({Rule::inside, 400, 300}, 6000, 4000), (Sides{400, 267}));
    EXPECT_EQ(sidesFor({Rule::inside, 400, 300}, 4000, 6000), (Sides{200, 300}));
    EXPECT_EQ(sidesFor({Rule::inside, 400, 300}, 40, 30), (Sides{400, 300}));
}

TEST(PixelSize, withoutEnlargementAPictureNeverGrows) {
    EXPECT_EQ(sidesFor({Rule::longest, 1200}, 600, 400, false), (Sides{600, 400}));
    EXPECT_EQ(sidesFor({Rule::inside, 1200, 1200}, 600, 400, false), (Sides{600, 400}));
    EXPECT_EQ(sidesFor({Rule::percent, 150}, 600, 400, false), (Sides{600, 400}));
    EXPECT_EQ(sidesFor({Rule::cover, 1000, 1000}, 600, 400, false), (Sides{400, 400}));
    EXPECT_EQ(sidesFor({Rule::stretch, 1000, 200}, 500, 400, false), (Sides{500, 100}));
    EXPECT_EQ(sidesFor({Rule::longest, 300}, 600, 400, false), (Sides{300, 200}));
}

TEST(PixelSize, coverCutsOffWhatHangsOverOnTheSidesThatGravityGivesUp) {
    const auto geometry = [](const Gravity& gravity) {
        return geometryFor({Rule::cover, 100, 100, gravity}, 400, 200, true);
    };
    EXPECT_EQ(geometry({}), (PixelGeometry{{0.5, 100, 100}, {0.5, 0, 100}, {}}));
    EXPECT_EQ(geometry({0, 0.5}), (PixelGeometry{{0.5, 0, 100}, {0.5, 0, 100}, {}}));
    EXPECT_EQ(geometry({1, 0.5}), (PixelGeometry{{0.5, 200, 100}, {0.5, 0, 100}, {}}));
}

TEST(PixelSize, paddingFillsTheBoxAroundThePicture) {
    const auto margins = [](const Gravity& gravity, bool enlarges) {
        return geometryFor({Rule::inside, 100, 61, gravity, white}, 40, 20, enlarges).margins;
    };
    EXPECT_EQ(margins({}, true), (Margins{0, 5, 0, 6}));
    EXPECT_EQ(margins({1, 1}, true), (Margins{0, 11, 0, 0}));
    EXPECT_EQ(margins({0, 0.5}, false), (Margins{0, 20, 60, 21}));
}

TEST(PixelSize, coverAtTheSizeOfThePictureCropsWholePixels) {
    const PixelGeometry geometry = geometryFor({Rule::cover, 101, 200}, 400, 200, true);
    EXPECT_EQ(geometry, (PixelGeometry{{1, 150, 101}, {1, 0, 200}, {}}));
}

} // namespace
} // namespace kestrine
