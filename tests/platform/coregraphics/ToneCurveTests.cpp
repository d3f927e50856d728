#include "platform/coregraphics/ToneCurve.h"

#include "tests/platform/coregraphics/ProfileBuilder.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>

namespace kestrine {

using namespace testing;

namespace {

constexpr double rounding = 2e-5; // profiles store numbers in 65536ths

Bytes powerCurve(double exponent) { return curveOfFormula(0, {exponent}); }

ToneCurve curveOfProfile(const Bytes& icc, ColorModel model) {
    const auto profile = ColorProfile::fromICC(icc, model);
    EXPECT_TRUE(profile);
    return toneCurves(profile ? &*profile : nullptr, model).front();
}

ToneCurve grayCurve(const Bytes& curve) { return curveOfProfile(grayProfile(curve), ColorModel::gray); }

/// Expects the curve to equal `expected` over the whole range, and its inverse to be exact.
template <class Function>
void expectCurve(const ToneCurve& curve, Function expected) {
    for (int i = 0; i <= 1000; ++i) {
        const double stored = i / 1000.0;
        EXPECT_NEAR(curve.light(stored), expected(stored), rounding) << stored;
        EXPECT_NEAR(curve.stored(curve.light(stored)), stored, 1e-6) << stored;
    }
}

double sRGBLight(double x) { return x <= 0.04045 ? x / 12.92 : std::pow((x + 0.055) / 1.055, 2.4); }

/// Samples as calibration tools write them: rounded to 16 bits, so that the darkest ones are equal.
std::vector<std::uint16_t> samplesOfPower(double exponent, std::size_t count) {
    std::vector<std::uint16_t> samples(count);
    for (std::size_t i = 0; i < count; ++i)
        samples[i] = static_cast<std::uint16_t>(
            std::lround(65535 * std::pow(static_cast<double>(i) / static_cast<double>(count - 1), exponent)));
    return samples;
}

} // namespace

TEST(ToneCurve, sRGBIsItsPublishedFormula) {
    expectCurve(ToneCurve::sRGB(), sRGBLight);
    EXPECT_NEAR(ToneCurve::sRGB().light(0.5), 0.2140411, 1e-7);
    EXPECT_EQ(ToneCurve::sRGB().light(0), 0);
    EXPECT_EQ(ToneCurve::sRGB().light(1), 1);
}

TEST(ToneCurve, argumentsAreClamped) {
    for (const ToneCurve& curve :
         {ToneCurve::sRGB(), *ToneCurve::fromSamples(std::vector<std::uint16_t>{0, 9, 65535})})
        for (const double low : {-0.0, -1e-9, -1e300, -HUGE_VAL, std::nan("")}) {
            EXPECT_EQ(curve.light(low), 0) << low;
            EXPECT_EQ(curve.stored(low), 0) << low;
            EXPECT_EQ(curve.light(1 - low), std::isnan(low) ? 0 : 1) << low;
            EXPECT_EQ(curve.stored(1 - low), std::isnan(low) ? 0 : 1) << low;
        }
}

TEST(ToneCurve, withoutAProfileTheCurveIsThatOfSRGB) {
    EXPECT_EQ(toneCurves(nullptr, ColorModel::gray), std::vector(1, ToneCurve::sRGB()));
    EXPECT_EQ(toneCurves(nullptr, ColorModel::rgb), std::vector(3, ToneCurve::sRGB()));
}

TEST(ToneCurve, aProfileForAnotherModelIsIgnored) {
    const auto gray = ColorProfile::fromGamma(1.0, {}, ColorModel::gray);
    EXPECT_EQ(toneCurves(&*gray, ColorModel::rgb), toneCurves(nullptr, ColorModel::rgb));
}

TEST(ToneCurve, everyFormulaOfProfilesIsRead) {
    expectCurve(grayCurve(powerCurve(1.8)), [](double x) { return std::pow(x, 1.8); });
    expectCurve(grayCurve(curveOfFormula(1, {2, 1, 0})), [](double x) { return x * x; });
    expectCurve(grayCurve(curveOfFormula(1, {2, 0.75, 0.25})),
                [](double x) { return std::pow(0.75 * x + 0.25, 2); });
    expectCurve(grayCurve(curveOfFormula(2, {2, 0.5, 0.25, 0.125})),
                [](double x) { return std::pow(0.5 * x + 0.25, 2) + 0.125; });
    expectCurve(grayCurve(curveOfFormula(3, {2.4, 1 / 1.055, 0.055 / 1.055, 1 / 12.92, 0.04045})), sRGBLight);
    expectCurve(grayCurve(curveOfFormula(4, {2, 0.5, 0.25, 0.25, 0.5, 0.375, 0.125})),
                [](double x) { return x < 0.5 ? 0.25 * x + 0.125 : std::pow(0.5 * x + 0.25, 2) + 0.375; });
}

TEST(ToneCurve, aFormulaThatDecreasesOrIsNotFiniteIsRefused) {
    const ToneCurve::Formula bad[] = {
        {.exponent = 0},
        {.exponent = -1},
        {.scale = -1},
        {.scale = 0},
        {.start = 0.5, .slope = -0.1},
        {.start = 0.5, .slope = 1.1},
        {.start = 0.5, .toe = 0.6},
        {.exponent = HUGE_VAL},
        {.offset = std::nan("")},
        {.toe = -HUGE_VAL},
    };
    for (std::size_t i = 0; i < std::size(bad); ++i)
        EXPECT_FALSE(ToneCurve::fromFormula(bad[i])) << i;
}

TEST(ToneCurve, partsThatOverlapByRoundingAreJoinedWithoutADecrease) {
    const auto curve = ToneCurve::fromFormula({.exponent = 2, .start = 0.5, .slope = 0.50005});
    ASSERT_TRUE(curve);
    EXPECT_EQ(curve->light(0.5), 0.25);
    EXPECT_EQ(curve->light(0.49999), 0.25);
    EXPECT_NEAR(curve->light(0.4), 0.20002, 1e-9);
}

TEST(ToneCurve, noSamplesAreTheIdentityAndASingleOneIsAnExponent) {
    expectCurve(grayCurve(curveOfSamples({})), [](double x) { return x; });
    expectCurve(grayCurve(curveOfSamples({0x01CD})), [](double x) { return std::pow(x, 0x1CD / 256.0); });
}

TEST(ToneCurve, samplesAreJoinedByStraightLines) {
    const ToneCurve curve = grayCurve(curveOfSamples({0, 13107, 65535}));
    expectCurve(curve, [](double x) { return x < 0.5 ? 0.4 * x : 0.2 + 1.6 * (x - 0.5); });
    EXPECT_NEAR(curve.stored(0.6), 0.75, 1e-9);
}

TEST(ToneCurve, theDarkestCodesOfRoundedSamplesDiffer) {
    const std::vector<std::uint16_t> samples = samplesOfPower(2.2, 256);
    ASSERT_EQ(samples[0], samples[1]);
    const ToneCurve curve = grayCurve(curveOfSamples(samples));
    EXPECT_GT(curve.light(1 / 255.0), 0);
    for (int i = 0; i <= 510; ++i) {
        EXPECT_NEAR(curve.light(i / 510.0), std::pow(i / 510.0, 2.2), 2.0 / 65535);
        EXPECT_NEAR(curve.stored(curve.light(i / 510.0)), i / 510.0, 1e-9);
    }
}

TEST(ToneCurve, aRunOfEqualSamplesIsPlacedAtItsMiddle) {
    const auto curve = ToneCurve::fromSamples(std::vector<std::uint16_t>{0, 100, 200, 200, 200, 300, 400});
    ASSERT_TRUE(curve);
    EXPECT_NEAR(curve->light(3 / 6.0) * 65535, 200, 1e-9);
    EXPECT_NEAR(curve->light(4 / 6.0) * 65535, 250, 1e-9);
}

TEST(ToneCurve, eachChannelHasItsOwnCurve) {
    const auto profile = ColorProfile::fromICC(
        matrixProfile(powerCurve(1), curveOfSamples({512}), curveOfSamples({0, 6553, 65535})),
        ColorModel::rgb);
    ASSERT_TRUE(profile);
    const std::vector<ToneCurve> curves = toneCurves(&*profile, ColorModel::rgb);
    ASSERT_EQ(curves.size(), 3u);
    EXPECT_NEAR(curves[0].light(0.5), 0.5, rounding);
    EXPECT_NEAR(curves[1].light(0.5), 0.25, rounding);
    EXPECT_NEAR(curves[2].light(0.5), 0.1, rounding);
}

TEST(ToneCurve, theLightnessOfAGreyProfileIsConvertedToLight) {
    const ToneCurve curve = curveOfProfile(grayProfile(curveOfSamples({}), "Lab "), ColorModel::gray);
    EXPECT_NEAR(curve.light(0.5), 0.1841865, 1e-6);  // L* 50
    EXPECT_NEAR(curve.light(0.04), 0.0044282, 1e-6); // L* 4
    expectCurve(curve,
                [](double x) { return x <= 0.08 ? x * 27 / 24.389 / 10 : std::pow((x + 0.16) / 1.16, 3); });
}

TEST(ToneCurve, curvesThatAreNotPlainAreReplacedByThatOfSRGB) {
    std::vector<std::uint16_t> clipped(256, 65535); // as in film scans: the upper half is white
    for (unsigned i = 0; i < 128; ++i)
        clipped[i] = static_cast<std::uint16_t>(i * 512);
    const Bytes curves[] = {
        curveOfSamples({65535, 0}),
        curveOfSamples({0, 30000, 29000, 65535}),
        curveOfSamples({500, 500, 500}),
        curveOfSamples(clipped),
        curveOfSamples({0}),
        powerCurve(0),
        powerCurve(-1),
        powerCurve(12),
        curveOfFormula(1, {2, 0, 0}),
        curveOfFormula(1, {2, -1, 1}),
        curveOfFormula(1, {2, 2, -1}),                              // black up to the middle
        curveOfFormula(3, {1, 1, 0, -1, 0.5}),                      // falls at first
        curveOfFormula(4, {1, 0.5, 0, 1, 0.5, 0, 0.25}),            // falls in the middle
        curveOfFormula(4, {-30000, 30000, -30000, 1, 0.5, 0.5, 0}), // overflows
    };
    for (const Bytes& curve : curves)
        EXPECT_EQ(grayCurve(curve), ToneCurve::sRGB()) << ::testing::PrintToString(curve);
}

TEST(ToneCurve, oneCurveThatIsNotPlainReplacesAllCurves) {
    const auto profile = ColorProfile::fromICC(
        matrixProfile(powerCurve(1), powerCurve(2), curveOfSamples({65535, 0})), ColorModel::rgb);
    ASSERT_TRUE(profile);
    EXPECT_FALSE(plainToneCurves(*profile));
    EXPECT_EQ(toneCurves(&*profile, ColorModel::rgb), toneCurves(nullptr, ColorModel::rgb));
}

TEST(ToneCurve, theCurveOfAProfileWithATableIsThatOfSRGB) {
    std::vector<Lab> corners(8);
    for (std::size_t i = 0; i < corners.size(); ++i)
        corners[i].lightness = static_cast<double>(i) * 12;
    const Bytes icc = makeICC("RGB ", "scnr", "Lab ", {{"A2B0", tableOfCorners(3, corners)}});
    EXPECT_EQ(curveOfProfile(icc, ColorModel::rgb), ToneCurve::sRGB());
}

TEST(ToneCurve, madeProfilesHaveTheirCurves) {
    const ColorProfile sRGB = ColorProfile::sRGB();
    const ColorProfile adobeRGB = ColorProfile::adobeRGB();
    for (const ToneCurve& curve : toneCurves(&sRGB, ColorModel::rgb))
        expectCurve(curve, sRGBLight);
    for (const ToneCurve& curve : toneCurves(&adobeRGB, ColorModel::rgb))
        expectCurve(curve, [](double x) { return std::pow(x, 563 / 256.0); });
}

} // namespace kestrine
