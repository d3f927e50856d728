#include "platform/coregraphics/ColorConversion.h"

#include "tests/platform/coregraphics/ColorReference.h"
#include "tests/support/TemporaryFolder.h"

#include <cstring>
#include <gtest/gtest.h>

namespace kestrine {

using namespace testing;

namespace {

template <class Sample>
constexpr SampleDepth depthOf = sizeof(Sample) == 1 ? SampleDepth::bits8 : SampleDepth::bits16;

/// One row of samples through a converter.
template <class Sample>
std::vector<Sample> converted(ForeignModel model, bool alpha, ByteView icc, const std::vector<Sample>& row) {
    const std::size_t channels = (model == ForeignModel::lab ? 3u : 4u) + alpha;
    const std::size_t pixels = row.size() / channels;
    std::vector<Sample> result(pixels * (3 + alpha));
    const auto converter = ForeignConverter::create(model, depthOf<Sample>, alpha, icc);
    converter->convert(reinterpret_cast<const std::uint8_t*>(row.data()),
                       reinterpret_cast<std::uint8_t*>(result.data()), pixels);
    return result;
}

template <class Sample>
void expectColor(const std::vector<Sample>& samples, std::size_t at, const Triple& color, double tolerance) {
    constexpr double last = depthOf<Sample> == SampleDepth::bits8 ? 255 : 65535;
    for (std::size_t c = 0; c < 3; ++c)
        EXPECT_NEAR(samples.at(at + c), color[c] * last, tolerance) << at << " " << c;
}

/// The colours of the sixteen combinations of inks, inside sRGB. Black changes fastest, and all combinations
/// with black ink are black.
std::vector<Lab> overprints(double black) {
    const Lab chromatic[] = {{100, 0, 0},    {90, 0, 60},   {50, 50, 0},   {45, 50, 30},
                             {60, -20, -30}, {55, -40, 30}, {35, 15, -40}, {25, 0, 0}};
    std::vector<Lab> all;
    for (const Lab& color : chromatic) {
        all.push_back(color);
        all.push_back({black, 0, 0});
    }
    return all;
}

Bytes inkProfile(double black = 0) {
    const Bytes table = tableOfCorners(4, overprints(black));
    return makeICC("CMYK", "scnr", "Lab ", {{"A2B0", table}, {"A2B1", table}});
}

Lab asStored(Lab color) {
    color.lightness = std::round(color.lightness * 2.55) / 2.55;
    return color;
}

} // namespace

TEST(ForeignConversion, cmykWithoutProfileIsTheComplement) {
    EXPECT_EQ(
        converted<std::uint8_t>(ForeignModel::cmyk, false, {}, {0, 0, 0, 0, 255, 255, 255, 0, 0, 0, 0, 255}),
        (std::vector<std::uint8_t>{255, 255, 255, 0, 0, 0, 0, 0, 0}));
    // 155 * 205 / 255 = 124.6, 55 * 205 / 255 = 44.2, 255 * 205 / 255 = 205
    EXPECT_EQ(converted<std::uint8_t>(ForeignModel::cmyk, false, {}, {100, 200, 0, 50}),
              (std::vector<std::uint8_t>{125, 44, 205}));
    EXPECT_EQ(converted<std::uint16_t>(ForeignModel::cmyk, false, {}, {0, 65535, 32768, 0, 0, 1, 65534, 1}),
              (std::vector<std::uint16_t>{65535, 0, 32767, 65534, 65533, 1}));
}

TEST(ForeignConversion, theComplementIsTheRoundedProductOfEveryPair) {
    std::vector<std::uint8_t> row;
    for (unsigned i = 0; i < 65536; ++i)
        row.insert(row.end(), {static_cast<std::uint8_t>(i), 0, 255, static_cast<std::uint8_t>(i >> 8)});
    const auto result = converted(ForeignModel::cmyk, false, {}, row);
    for (unsigned i = 0; i < 65536; ++i) {
        const double exact = (255 - i % 256) * (255 - i / 256) / 255.0;
        ASSERT_NEAR(result[3 * i], exact, 0.5) << i;
        ASSERT_EQ(result[3 * i + 1], 255 - i / 256) << i;
        ASSERT_EQ(result[3 * i + 2], 0) << i;
    }
}

TEST(ForeignConversion, invertedCMYKIsTheComplementOfCMYK) {
    EXPECT_EQ(converted<std::uint8_t>(ForeignModel::cmykInverted, false, {}, {155, 55, 255, 205}),
              (std::vector<std::uint8_t>{125, 44, 205}));
    EXPECT_EQ(converted<std::uint16_t>(ForeignModel::cmykInverted, false, {}, {65535, 0, 32767, 65535}),
              (std::vector<std::uint16_t>{65535, 0, 32767}));
}

TEST(ForeignConversion, alphaIsCopied) {
    for (const Bytes& icc : {Bytes{}, inkProfile()})
        for (const ForeignModel model : {ForeignModel::cmyk, ForeignModel::cmykInverted}) {
            const auto narrow = converted<std::uint8_t>(model, true, icc, {9, 8, 7, 6, 77, 0, 0, 0, 0, 255});
            EXPECT_EQ(narrow[3], 77);
            EXPECT_EQ(narrow[7], 255);
            const auto wide =
                converted<std::uint16_t>(model, true, icc, {9, 8, 7, 6, 7777, 0, 0, 0, 0, 65535});
            EXPECT_EQ(wide[3], 7777);
            EXPECT_EQ(wide[7], 65535);
        }
    EXPECT_EQ(converted<std::uint8_t>(ForeignModel::lab, true, {}, {0, 0, 0, 77, 255, 0, 0, 1})[3], 77);
    EXPECT_EQ(converted<std::uint16_t>(ForeignModel::lab, true, {}, {0, 0, 0, 7777, 0, 0, 0, 1})[7], 1);
}

TEST(ForeignConversion, cmykIsConvertedByItsProfile) {
    const std::vector<Lab> colors = overprints(0);
    std::vector<std::uint8_t> row, inverted;
    std::vector<std::uint16_t> wide;
    for (unsigned i = 0; i < 16; ++i)
        for (int ink = 3; ink >= 0; --ink) {
            const bool isOn = (i >> ink & 1) != 0;
            row.push_back(isOn ? 255 : 0);
            inverted.push_back(isOn ? 0 : 255);
            wide.push_back(isOn ? 65535 : 0);
        }
    const auto result = converted(ForeignModel::cmyk, false, inkProfile(), row);
    const auto wideResult = converted(ForeignModel::cmyk, false, inkProfile(), wide);
    EXPECT_EQ(converted(ForeignModel::cmykInverted, false, inkProfile(), inverted), result);
    for (std::size_t i = 0; i < 16; ++i) {
        expectColor(result, 3 * i, sRGBOfLab(asStored(colors[i])), 1.5);
        expectColor(wideResult, 3 * i, sRGBOfLab(asStored(colors[i])), 300);
    }
}

TEST(ForeignConversion, theProfileIsInterpolated) {
    const auto result =
        converted<std::uint8_t>(ForeignModel::cmyk, false, inkProfile(), {0, 0, 128, 0, 0, 0, 0, 128});
    const double half = 128 / 255.0;
    expectColor(result, 0, sRGBOfLab({100 - 10 * half, 0, 60 * half}), 2.5);
    expectColor(result, 3, sRGBOfLab({100 - 100 * half, 0, 0}), 2.5);
}

TEST(ForeignConversion, theBlackestInkBecomesBlack) {
    const auto result =
        converted<std::uint8_t>(ForeignModel::cmyk, false, inkProfile(15), {255, 255, 255, 255, 0, 0, 0, 0});
    EXPECT_EQ(result, (std::vector<std::uint8_t>{0, 0, 0, 255, 255, 255}));
}

TEST(ForeignConversion, aProfileThatIsInvalidOrForAnotherSpaceIsIgnored) {
    const ColorProfile sRGB = ColorProfile::sRGB();
    const std::vector<std::uint8_t> row = {100, 200, 0, 50};
    Bytes broken = inkProfile();
    broken.pop_back();
    const Bytes withoutTable = makeICC("CMYK", "prtr", "Lab ", {});
    const Bytes tableForThree =
        makeICC("CMYK", "prtr", "Lab ", {{"A2B0", tableOfCorners(3, std::vector<Lab>(8))}});
    for (const ByteView icc :
         {sRGB.bytes(), ByteView(broken), ByteView(withoutTable), ByteView(tableForThree)})
        EXPECT_EQ(converted(ForeignModel::cmyk, false, icc, row), (std::vector<std::uint8_t>{125, 44, 205}));
    const std::vector<std::uint8_t> lab = {128, 10, 20};
    EXPECT_EQ(converted(ForeignModel::lab, false, inkProfile(), lab),
              converted(ForeignModel::lab, false, {}, lab));
}

TEST(ForeignConversion, lab8HasSignedColourSamples) {
    std::vector<Lab> colors;
    std::vector<std::uint8_t> row;
    for (int lightness = 0; lightness <= 255; lightness += 15)
        for (int a = -128; a <= 127; a += 17)
            for (int b = -128; b <= 127; b += 17) {
                colors.push_back({lightness / 2.55, double(a), double(b)});
                for (const int sample : {lightness, a, b})
                    row.push_back(static_cast<std::uint8_t>(sample));
            }
    const auto result = converted(ForeignModel::lab, false, {}, row);
    for (std::size_t i = 0; i < colors.size(); ++i)
        expectColor(result, 3 * i, sRGBOfLab(colors[i]), 1.1);
}

TEST(ForeignConversion, lab16IsIn256ths) {
    const Lab colors[] = {{0, 0, 0},
                          {100, 0, 0},
                          {50, 0, 0},
                          {54.29, 80.8, 69.9},
                          {87.82, -79.27, 80.99},
                          {29.57, 68.3, -112.03},
                          {20, -10.5, 5.25},
                          {75, 0.25, -0.25}};
    for (const Lab& color : colors) {
        const auto result =
            converted<std::uint16_t>(ForeignModel::lab, false, {},
                                     {static_cast<std::uint16_t>(std::lround(color.lightness * 655.35)),
                                      static_cast<std::uint16_t>(std::lround(color.a * 256)),
                                      static_cast<std::uint16_t>(std::lround(color.b * 256))});
        expectColor(result, 0, sRGBOfLab(color), 250); // less than one 8-bit level
    }
}

TEST(ForeignConversion, theLimitsOfLab16AreKept) {
    const auto result = converted<std::uint16_t>(ForeignModel::lab, false, {},
                                                 {65535, 0x7FFF, 0x7FFF, 32768, 0x8000, 0x8000});
    expectColor(result, 0, sRGBOfLab({100, 127, 127}), 250);
    expectColor(result, 3, sRGBOfLab({50, -128, -128}), 250);
}

TEST(ForeignConversion, labIsConvertedByItsProfile) {
    // A table that removes a* and b*: every colour becomes grey with its lightness.
    std::vector<Lab> corners(8, {0, 0, 0});
    for (std::size_t i = 4; i < 8; ++i)
        corners[i].lightness = 100;
    const Bytes icc = makeICC("Lab ", "spac", "Lab ", {{"A2B0", tableOfCorners(3, corners)}});
    const auto result = converted<std::uint8_t>(ForeignModel::lab, false, icc, {128, 60, 200});
    expectColor(result, 0, sRGBOfLab({128 / 2.55, 0, 0}), 1.5);
}

TEST(ForeignConversion, theInstalledLabIdentityProfileChangesNothing) {
    const Bytes icc = readFileBytes("/usr/share/color/icc/LCMSLABI.ICM");
    if (icc.empty())
        GTEST_SKIP() << "the package icc-profiles-free is not installed";
    const std::vector<std::uint8_t> row = {128, 10, 246, 200, 250, 20, 64, 20, 5};
    const auto through = converted(ForeignModel::lab, false, icc, row);
    const auto plain = converted(ForeignModel::lab, false, {}, row);
    for (std::size_t i = 0; i < plain.size(); ++i)
        EXPECT_NEAR(through[i], plain[i], 2) << i;
}

} // namespace kestrine
