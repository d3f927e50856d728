#include "platform/coregraphics/ColorConversion.h"
#include "platform/coregraphics/RowStages.h"

#include "tests/platform/coregraphics/ColorReference.h"
#include "tests/support/Pictures.h"

#include <cmath>

namespace kestrine {

using namespace testing;

namespace {

constexpr SampleDepth depths[] = {SampleDepth::bits8, SampleDepth::bits16};

/// Tolerance for the rounding of primaries, in 16-bit codes: profiles store them in 65536ths of full light,
/// the matrix of sRGB triples the error, and near black a 65536th is 13 codes.
constexpr double roundingOfPrimaries = 40;

double maximum(SampleDepth depth) { return depth == SampleDepth::bits8 ? 255 : 65535; }

/// Samples from the whole range, including both ends.
PixelBuffer manyColors(ColorModel model, bool alpha, SampleDepth depth) {
    const RowFormat format{64, 64, model, alpha, depth};
    const auto last = static_cast<unsigned>(maximum(depth));
    return makePicture(format, [&](std::uint32_t x, std::uint32_t y, std::size_t channel) {
        const unsigned step = (x * (channel + 1) + y * (7 - 2 * channel) + x * y * channel) % 64;
        return step * last / 63;
    });
}

PixelBuffer inSRGB(const PixelBuffer& picture, const ColorProfile* profile) {
    const auto rows = rowsInSRGB(rowsOfPixels(std::make_shared<PixelBuffer>(picture)), profile);
    return *readAllRows(*rows);
}

PixelBuffer inSRGB(const PixelBuffer& picture, const Bytes& icc) {
    const auto profile = ColorProfile::fromICC(icc, picture.format.model);
    EXPECT_TRUE(profile);
    return inSRGB(picture, profile ? &*profile : nullptr);
}

PixelBuffer inGenericRGBA(const PixelBuffer& picture, const ColorProfile* profile) {
    const auto rows = rowsInGenericRGBA(rowsOfPixels(std::make_shared<PixelBuffer>(picture)), profile);
    return *readAllRows(*rows);
}

/// Expects every colour of `converted` to be `expected(color)` of the colour (0..1) in `source`, within
/// `tolerance` codes, and the same alpha.
template <class Function>
void expectColors(const PixelBuffer& source, const PixelBuffer& converted, double tolerance,
                  Function expected) {
    const RowFormat& format = source.format;
    ASSERT_EQ(converted.format,
              (RowFormat{format.width, format.height, ColorModel::rgb, format.hasAlpha, format.depth}));
    const double last = maximum(format.depth);
    for (std::uint32_t y = 0; y < format.height; ++y)
        for (std::uint32_t x = 0; x < format.width; ++x) {
            Triple color{};
            for (std::size_t c = 0; c < format.colorChannels(); ++c)
                color[c] = sampleAt(source, x, y, c) / last;
            const Triple wanted = expected(color);
            for (std::size_t c = 0; c < 3; ++c)
                ASSERT_NEAR(sampleAt(converted, x, y, c), wanted[c] * last, tolerance)
                    << x << " " << y << " " << c;
            if (format.hasAlpha) {
                ASSERT_EQ(sampleAt(converted, x, y, 3), sampleAt(source, x, y, format.colorChannels()));
            }
        }
}

Triple power(const Triple& color, double exponent) {
    return {std::pow(color[0], exponent), std::pow(color[1], exponent), std::pow(color[2], exponent)};
}

Triple equal(double value) { return {value, value, value}; }

class FailingRows final : public RowSource {
public:
    explicit FailingRows(const RowFormat& format) : RowSource(format) {}
    Result<void> readRow(std::span<std::uint8_t>) override {
        return Failure{Reason::truncated, "the rows end"};
    }
};

/// Colours inside sRGB, for the corners of a table. Red changes slowest, blue fastest.
const std::vector<Lab> corners = {{0, 0, 0},    {30, 20, -50}, {60, -40, 40}, {70, -30, -10},
                                  {45, 50, 30}, {50, 50, -30}, {85, 0, 60},   {100, 0, 0}};

} // namespace

TEST(ColorConversion, sRGBRowsAreNotChanged) {
    const ColorProfile sRGB = ColorProfile::sRGB();
    for (const ColorProfile* profile : {static_cast<const ColorProfile*>(nullptr), &sRGB}) {
        auto rows = rowsOfPixels(
            std::make_shared<PixelBuffer>(manyColors(ColorModel::rgb, true, SampleDepth::bits8)));
        const RowSource* const before = rows.get();
        EXPECT_EQ(rowsInSRGB(std::move(rows), profile).get(), before);
    }
}

TEST(ColorConversion, greyWithoutProfileKeepsEveryCode) {
    for (const SampleDepth depth : depths) {
        const auto side = static_cast<std::uint32_t>(depth == SampleDepth::bits8 ? 16 : 256);
        const PixelBuffer all =
            makePicture({side, side, ColorModel::gray, false, depth},
                        [&](std::uint32_t x, std::uint32_t y, std::size_t) { return y * side + x; });
        expectColors(all, inSRGB(all, nullptr), 0.001, [](const Triple& color) { return equal(color[0]); });
    }
}

TEST(ColorConversion, alphaIsKept) {
    for (const SampleDepth depth : depths) {
        const PixelBuffer gray = manyColors(ColorModel::gray, true, depth);
        expectColors(gray, inSRGB(gray, nullptr), 0.001, [](const Triple& color) { return equal(color[0]); });
        const PixelBuffer rgb = manyColors(ColorModel::rgb, true, depth);
        const ColorProfile adobeRGB = ColorProfile::adobeRGB();
        expectColors(rgb, inSRGB(rgb, &adobeRGB), depth == SampleDepth::bits8 ? 0.6 : roundingOfPrimaries,
                     [](const Triple& color) { return sRGBOfAdobeLight(power(color, 563 / 256.0)); });
    }
}

TEST(ColorConversion, coloursOutsideSRGBAreClipped) {
    const ColorProfile adobeRGB = ColorProfile::adobeRGB();
    const PixelBuffer green =
        makePicture({1, 1, ColorModel::rgb, false, SampleDepth::bits8},
                    [](std::uint32_t, std::uint32_t, std::size_t c) { return c == 1 ? 255 : 0; });
    const PixelBuffer converted = inSRGB(green, &adobeRGB);
    EXPECT_EQ(converted.bytes, (Bytes{0, 255, 0}));
}

TEST(ColorConversion, greysStayGrey) {
    const ColorProfile adobeRGB = ColorProfile::adobeRGB();
    const PixelBuffer grays = makePicture({256, 1, ColorModel::rgb, false, SampleDepth::bits8},
                                          [](std::uint32_t x, std::uint32_t, std::size_t) { return x; });
    const PixelBuffer converted = inSRGB(grays, &adobeRGB);
    for (std::uint32_t x = 0; x < 256; ++x) {
        EXPECT_EQ(sampleAt(converted, x, 0, 0), sampleAt(converted, x, 0, 1)) << x;
        EXPECT_EQ(sampleAt(converted, x, 0, 1), sampleAt(converted, x, 0, 2)) << x;
    }
}

TEST(ColorConversion, greyIsConvertedByTheCurveOfItsProfile) {
    const auto linear = ColorProfile::fromGamma(1, {}, ColorModel::gray);
    for (const SampleDepth depth : depths) {
        const PixelBuffer gray = manyColors(ColorModel::gray, false, depth);
        expectColors(gray, inSRGB(gray, &*linear), depth == SampleDepth::bits8 ? 0.6 : 1,
                     [](const Triple& color) { return equal(storedInSRGB(color[0])); });
    }
}

TEST(ColorConversion, eachChannelIsConvertedByItsOwnCurve) {
    const Bytes icc = matrixProfile(curveOfSamples({}), curveOfSamples({512}), curveOfSamples({768}));
    const PixelBuffer picture = manyColors(ColorModel::rgb, false, SampleDepth::bits8);
    expectColors(picture, inSRGB(picture, icc), 1, [](const Triple& color) {
        return Triple{storedInSRGB(color[0]), storedInSRGB(std::pow(color[1], 2)),
                      storedInSRGB(std::pow(color[2], 3))};
    });
}

TEST(ColorConversion, aProfileOfAnotherModelIsIgnored) {
    const auto gray = ColorProfile::fromGamma(1, {}, ColorModel::gray);
    auto rows =
        rowsOfPixels(std::make_shared<PixelBuffer>(manyColors(ColorModel::rgb, false, SampleDepth::bits8)));
    const RowSource* const before = rows.get();
    EXPECT_EQ(rowsInSRGB(std::move(rows), &*gray).get(), before);
    const ColorProfile adobeRGB = ColorProfile::adobeRGB();
    const PixelBuffer picture = manyColors(ColorModel::gray, false, SampleDepth::bits8);
    EXPECT_TRUE(samePicture(inSRGB(picture, &adobeRGB), inSRGB(picture, nullptr)));
}

TEST(ColorConversion, aTableIsPreferredToCurves) {
    const ProfileTag grayTable = {"A2B0", tableOfCorners(1, {{0, 0, 0}, {60, 0, 0}})};
    const Bytes gray = makeICC("GRAY", "mntr", "Lab ", {grayTable, {"kTRC", curveOfSamples({})}});
    const auto white = [](ColorModel model) {
        return makePicture({1, 1, model, false, SampleDepth::bits8}, [](auto, auto, auto) { return 255; });
    };
    expectColors(white(ColorModel::gray), inSRGB(white(ColorModel::gray), gray), 1, [](const Triple&) {
        return sRGBOfLab({60, 0, 0});
    });
    const Bytes line = curveOfSamples({});
    std::vector<Lab> half(8, {60, 0, 0});
    half[0].lightness = 0;
    const Bytes rgb = makeICC("RGB ", "mntr", "Lab ",
                              {{"A2B0", tableOfCorners(3, half)},
                               {"rTRC", line},
                               {"gTRC", line},
                               {"bTRC", line},
                               {"rXYZ", colorTag(0.4, 0.2, 0)},
                               {"gXYZ", colorTag(0.4, 0.7, 0.1)},
                               {"bXYZ", colorTag(0.1, 0.1, 0.7)}});
    expectColors(white(ColorModel::rgb), inSRGB(white(ColorModel::rgb), rgb), 1, [](const Triple&) {
        return sRGBOfLab({60, 0, 0});
    });
}

TEST(ColorConversion, aProfileWithATableIsApplied) {
    const Bytes icc = makeICC("RGB ", "mntr", "Lab ", {{"A2B0", tableOfCorners(3, corners)}});
    for (const SampleDepth depth : depths) {
        const auto last = static_cast<unsigned>(maximum(depth));
        const PixelBuffer picture = makePicture(
            {8, 1, ColorModel::rgb, true, depth}, [&](std::uint32_t x, std::uint32_t, std::size_t channel) {
                return channel == 3 ? x * 10 : (x >> (2 - channel) & 1) * last;
            });
        expectColors(picture, inSRGB(picture, icc), depth == SampleDepth::bits8 ? 1.5 : 300,
                     [](const Triple& color) {
                         Lab lab = corners[static_cast<std::size_t>(color[0] * 4 + color[1] * 2 + color[2])];
                         lab.lightness = std::round(lab.lightness * 2.55) / 2.55; // as the table stores it
                         return sRGBOfLab(lab);
                     });
    }
}

TEST(ColorConversion, aGreyProfileWithATableIsApplied) {
    const Bytes icc = makeICC("GRAY", "mntr", "Lab ", {{"A2B0", tableOfCorners(1, {{0, 0, 0}, {60, 0, 0}})}});
    const PixelBuffer picture =
        makePicture({2, 1, ColorModel::gray, false, SampleDepth::bits8},
                    [](std::uint32_t x, std::uint32_t, std::size_t) { return x * 255; });
    expectColors(picture, inSRGB(picture, icc), 1, [](const Triple& color) {
        return sRGBOfLab({60 * color[0], 0, 0});
    });
}

TEST(ColorConversion, theBlackOfAProfileBecomesBlack) {
    const Bytes icc =
        grayProfile(curveOfFormula(4, {1, 0.9, 0.1, 1, 0, 0, 0})); // from a tenth of full light on
    const PixelBuffer picture =
        makePicture({2, 1, ColorModel::gray, false, SampleDepth::bits8},
                    [](std::uint32_t x, std::uint32_t, std::size_t) { return x * 255; });
    EXPECT_EQ(inSRGB(picture, icc).bytes, (Bytes{0, 0, 0, 255, 255, 255}));
}

TEST(ColorConversion, coloursReturnFromAWiderSpace) {
    const auto wide = ColorProfile::fromSRGBCurve(
        {{0.3127, 0.3290}, {0.7347, 0.2653}, {0.1596, 0.8404}, {0.1000, 0.0050}}, "Wide");
    const ColorProfile adobeRGB = ColorProfile::adobeRGB();
    const PixelBuffer colors = manyColors(ColorModel::rgb, true, SampleDepth::bits16);
    RowSourcePointer rows = rowsOfPixels(std::make_shared<const PixelBuffer>(colors));
    rows = rowsInProfile(std::move(rows), adobeRGB, wide.value());
    rows = rowsOf8Bits(rowsInProfile(std::move(rows), wide.value(), adobeRGB));
    const RowSourcePointer plain = rowsOf8Bits(rowsOfPixels(std::make_shared<const PixelBuffer>(colors)));
    EXPECT_TRUE(samePicture(*readAllRows(*rows), *readAllRows(*plain), 1));
}

TEST(GenericRGBA, sRGBIsConvertedByLightAndPrimaries) {
    for (const SampleDepth depth : depths) {
        const PixelBuffer picture = manyColors(ColorModel::rgb, false, depth);
        const PixelBuffer converted = inGenericRGBA(picture, nullptr);
        ASSERT_EQ(converted.format, (RowFormat{64, 64, ColorModel::rgb, true, SampleDepth::bits8}));
        for (std::uint32_t y = 0; y < 64; ++y)
            for (std::uint32_t x = 0; x < 64; ++x) {
                Triple light{};
                for (std::size_t c = 0; c < 3; ++c)
                    light[c] = lightInSRGB(sampleAt(picture, x, y, c) / maximum(depth));
                const Triple wanted = genericRGBOfLight(light);
                for (std::size_t c = 0; c < 3; ++c)
                    ASSERT_NEAR(sampleAt(converted, x, y, c), wanted[c] * 255, 0.7)
                        << x << " " << y << " " << c;
                ASSERT_EQ(sampleAt(converted, x, y, 3), 255U);
            }
    }
}

TEST(GenericRGBA, genericRGBIsNotChanged) {
    const ColorProfile generic = ColorProfile::genericRGB();
    const PixelBuffer picture = manyColors(ColorModel::rgb, false, SampleDepth::bits8);
    const PixelBuffer converted = inGenericRGBA(picture, &generic);
    const PixelBuffer expected = makePicture(converted.format, [&](auto x, auto y, std::size_t c) {
        return c == 3 ? 255U : sampleAt(picture, x, y, c);
    });
    EXPECT_TRUE(samePicture(converted, expected));
}

TEST(GenericRGBA, greyIsConvertedByItsCurveAndStaysGrey) {
    const auto linear = ColorProfile::fromGamma(1, {}, ColorModel::gray);
    const PixelBuffer grays = makePicture({256, 1, ColorModel::gray, false, SampleDepth::bits8},
                                          [](std::uint32_t x, auto, auto) { return x; });
    const PixelBuffer untagged = inGenericRGBA(grays, nullptr), tagged = inGenericRGBA(grays, &*linear);
    for (std::uint32_t x = 0; x < 256; ++x) {
        EXPECT_NEAR(sampleAt(untagged, x, 0, 0), storedInGenericRGB(lightInSRGB(x / 255.0)) * 255, 0.6);
        EXPECT_NEAR(sampleAt(tagged, x, 0, 0), storedInGenericRGB(x / 255.0) * 255, 0.6);
        EXPECT_EQ(sampleAt(tagged, x, 0, 0), sampleAt(tagged, x, 0, 2));
    }
}

TEST(GenericRGBA, alphaIsKeptAndTransparentPixelsHaveNoColour) {
    const PixelBuffer picture =
        makePicture({6, 1, ColorModel::rgb, true, SampleDepth::bits16},
                    [](auto x, auto, std::size_t c) { return c == 3 ? x * 13107 : 65535; });
    const PixelBuffer converted = inGenericRGBA(picture, nullptr);
    for (std::uint32_t x = 0; x < 6; ++x) {
        EXPECT_EQ(sampleAt(converted, x, 0, 3), x * 51);
        EXPECT_EQ(sampleAt(converted, x, 0, 1), x == 0 ? 0U : 255U);
    }
}

TEST(GenericRGBA, aProfileWithATableIsApplied) {
    const Bytes icc = makeICC("RGB ", "mntr", "Lab ", {{"A2B0", tableOfCorners(3, corners)}});
    const auto profile = ColorProfile::fromICC(icc, ColorModel::rgb);
    ASSERT_TRUE(profile);
    const PixelBuffer picture =
        makePicture({8, 1, ColorModel::rgb, false, SampleDepth::bits8},
                    [](auto x, auto, std::size_t c) { return (x >> (2 - c) & 1) * 255; });
    const PixelBuffer converted = inGenericRGBA(picture, &*profile);
    for (std::uint32_t x = 0; x < 8; ++x) {
        const Triple stored = sRGBOfLab(corners[x]);
        const Triple wanted =
            genericRGBOfLight({lightInSRGB(stored[0]), lightInSRGB(stored[1]), lightInSRGB(stored[2])});
        for (std::size_t c = 0; c < 3; ++c)
            EXPECT_NEAR(sampleAt(converted, x, 0, c), wanted[c] * 255, 2) << x << " " << c;
    }
}

TEST(ColorConversion, aFailureOfTheRowsIsReturned) {
    const RowFormat format{3, 3, ColorModel::gray, false, SampleDepth::bits8};
    const auto rows = rowsInSRGB(std::make_unique<FailingRows>(format), nullptr);
    const auto pixels = readAllRows(*rows);
    ASSERT_FALSE(pixels);
    EXPECT_EQ(pixels.failure().reason, Reason::truncated);
}

} // namespace kestrine
