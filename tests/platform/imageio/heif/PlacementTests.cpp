#include "platform/imageio/heif/Placement.h"

#include "tests/platform/imageio/heif/Boxes.h"

#include <gtest/gtest.h>

namespace kestrine::heif {

namespace {

using namespace testing;

/// A picture as a table of numbers, on which the steps are done one after another.
struct Pixels {
    Size size;
    std::vector<int> values;

    int at(std::uint32_t x, std::uint32_t y) const { return values[y * size.width + x]; }
    bool operator==(const Pixels&) const = default;
};

template <class PixelAt>
Pixels made(const Size& size, PixelAt pixelAt) {
    Pixels pixels{size, {}};
    for (std::uint32_t y = 0; y < size.height; ++y)
        for (std::uint32_t x = 0; x < size.width; ++x)
            pixels.values.push_back(pixelAt(x, y));
    return pixels;
}

Pixels turnedClockwise(const Pixels& p) {
    return made({p.size.height, p.size.width},
                [&](auto x, auto y) { return p.at(y, p.size.height - 1 - x); });
}
Pixels mirrored(const Pixels& p) {
    return made(p.size, [&](auto x, auto y) { return p.at(p.size.width - 1 - x, y); });
}
Pixels flipped(const Pixels& p) {
    return made(p.size, [&](auto x, auto y) { return p.at(x, p.size.height - 1 - y); });
}
Pixels cut(const Pixels& p, const Area& area) {
    return made(area.size, [&](auto x, auto y) { return p.at(area.left + x, area.top + y); });
}

/// What a decoder and the stages above it make of `stored`.
Pixels shown(const Pixels& stored, const Placement& placement) {
    Pixels result = cut(stored, placement.area());
    if (placement.isMirrored())
        result = mirrored(result);
    for (int i = 0; i < placement.quarterTurns(); ++i)
        result = turnedClockwise(result);
    return result;
}

Box clap(std::uint32_t width, std::uint32_t height, std::int32_t right, std::int32_t down, Bytes& kept,
         std::uint32_t denominator = 1) {
    kept = joined({u32(width), u32(1), u32(height), u32(1), u32(static_cast<std::uint32_t>(right)),
                   u32(denominator), u32(static_cast<std::uint32_t>(down)), u32(denominator)});
    return {fourCC("clap"), kept};
}

} // namespace

TEST(Placement, everySequenceOfStepsShowsWhatTheStepsGive) {
    const Pixels stored = made({7, 5}, [](auto x, auto y) { return static_cast<int>(10 * y + x); });
    constexpr int kinds = 4, length = 5;
    for (int sequence = 0; sequence < 1 << (2 * length); ++sequence) {
        Placement placement(stored.size);
        Pixels expected = stored;
        for (int step = sequence, i = 0; i < length; ++i, step /= kinds) {
            const bool canBeCut = expected.size.width > 2 && expected.size.height > 1;
            const Area area{1, 0, {expected.size.width - 2, expected.size.height - 1}};
            switch (step % kinds) {
            case 0:
                placement.turn(1), expected = turnedClockwise(expected);
                break;
            case 1:
                placement.exchangeLeftAndRight(), expected = mirrored(expected);
                break;
            case 2:
                placement.exchangeTopAndBottom(), expected = flipped(expected);
                break;
            default:
                if (canBeCut)
                    placement.cut(area), expected = cut(expected, area);
            }
        }
        ASSERT_EQ(shown(stored, placement), expected) << sequence;
        ASSERT_EQ(placement.size(), expected.size) << sequence;
    }
}

TEST(Placement, turnsAreStoredCounterClockwise) {
    Placement placement({4, 2});
    const Bytes quarters{1};
    ASSERT_TRUE(addTransformation(placement, {fourCC("irot"), quarters}));
    EXPECT_EQ(placement.quarterTurns(), 3);
    EXPECT_EQ(placement.size(), (Size{2, 4}));
}

TEST(Placement, reflectionsExchangeTopAndBottomOrLeftAndRight) {
    const Bytes topBottom{0}, leftRight{1};
    Placement one({4, 2}), other({4, 2});
    ASSERT_TRUE(addTransformation(one, {fourCC("imir"), topBottom}));
    ASSERT_TRUE(addTransformation(other, {fourCC("imir"), leftRight}));
    EXPECT_EQ(one.quarterTurns(), 2);
    EXPECT_EQ(other.quarterTurns(), 0);
    EXPECT_TRUE(one.isMirrored() && other.isMirrored());
}

TEST(Placement, anApertureLiesAroundTheMiddle) {
    Placement placement({100, 80});
    Bytes kept;
    ASSERT_TRUE(addTransformation(placement, clap(60, 40, -5, 3, kept)));
    EXPECT_EQ(placement.area(), (Area{15, 23, {60, 40}}));
}

TEST(Placement, betweenTwoPixelsTheEarlierOneCounts) {
    Placement placement({100, 80});
    Bytes kept;
    ASSERT_TRUE(addTransformation(placement, clap(61, 41, 1, -1, kept, 4)));
    EXPECT_EQ(placement.area(), (Area{19, 19, {61, 41}}));
}

TEST(Placement, anApertureIsCutToThePicture) {
    Placement placement({100, 80});
    Bytes kept;
    ASSERT_TRUE(addTransformation(placement, clap(100, 200, 10, 0, kept)));
    EXPECT_EQ(placement.area(), (Area{10, 0, {90, 80}}));
}

TEST(Placement, anApertureOfNothingIsDamage) {
    Bytes kept;
    Placement placement({100, 80});
    EXPECT_FALSE(addTransformation(placement, clap(0, 10, 0, 0, kept)));
    EXPECT_FALSE(addTransformation(placement, clap(10, 10, 200, 0, kept)));
    EXPECT_FALSE(addTransformation(placement, clap(10, 10, 0, 0, kept, 0)));
    const Bytes tooShort(31);
    EXPECT_FALSE(addTransformation(placement, {fourCC("clap"), tooShort}));
}

TEST(Placement, otherPropertiesDoNothing) {
    Placement placement({100, 80});
    ASSERT_TRUE(addTransformation(placement, {fourCC("pasp"), {}}));
    EXPECT_TRUE(placement.keepsRowsOf({100, 80}));
    EXPECT_EQ(placement.quarterTurns(), 0);
}

} // namespace kestrine::heif
