// The tables must keep codes apart like the curves: every code is converted to light and back without a
// change.

#include "platform/coregraphics/ToneCurve.h"

#include "tests/platform/coregraphics/ProfileBuilder.h"
#include "tests/support/TemporaryFolder.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <thread>

namespace kestrine {

using namespace testing;

namespace {

struct NamedCurve {
    std::string name;
    ToneCurve curve;
    double decision = 0.1; ///< tolerance of the choice of an 8-bit code, in levels
    int codes = 0;         ///< tolerance of a 16-bit code after both conversions
};

ToneCurve power(double exponent) { return *ToneCurve::fromFormula({.exponent = exponent}); }

std::vector<NamedCurve> curves() {
    return {
        {"sRGB", ToneCurve::sRGB()},
        {"1.0", power(1)},
        {"1.8", power(1.8)},
        {"2.2", power(2.2), 0.1, 1},
        {"Adobe RGB", power(563 / 256.0), 0.1, 1},
        {"L*", power(1).asLightness()},
        // Steeper near black, so slightly less exact there.
        {"2.4", power(2.4), 0.15, 5},
        {"2.6", power(2.6), 0.25, 11},
    };
}

std::vector<NamedCurve> installedCurves() {
    std::vector<NamedCurve> found;
    for (const std::string& path : installedProfiles())
        for (const ColorModel model : {ColorModel::gray, ColorModel::rgb})
            if (const auto profile = ColorProfile::fromICC(readFileBytes(path), model))
                for (const ToneCurve& curve : toneCurves(&*profile, model))
                    found.push_back({path, curve, 0.1, 1});
    return found;
}

// The use of the tables by kernels, in single precision.
float position(float light) { return std::sqrt(light) * static_cast<float>(toneTableSize - 1); }

unsigned code8(const ToneTable& table, float light) {
    return table.stored8[static_cast<std::size_t>(position(light) + 0.5f)];
}

unsigned code16(const ToneTable& table, float light) {
    const float place = position(light);
    const std::size_t index = std::min(static_cast<std::size_t>(place), toneTableSize - 2);
    const std::span<const float> fraction = table.storedFraction();
    const float stored =
        fraction[index] + (fraction[index + 1] - fraction[index]) * (place - static_cast<float>(index));
    return static_cast<unsigned>(stored * 65535 + 0.5f);
}

void expectEvery8BitCodeBack(const NamedCurve& named) {
    const ToneTable table(named.curve);
    for (unsigned code = 0; code < 256; ++code)
        EXPECT_EQ(code8(table, table.light8[code]), code) << named.name;
}

int worst16BitCode(const ToneTable& table) {
    int worst = 0;
    for (int code = 0; code < 65536; ++code)
        worst = std::max(worst, std::abs(static_cast<int>(code16(table, table.light16()[code])) - code));
    return worst;
}

/// The largest difference to exact rounding of a code chosen from light, in levels.
double worstDecision(const NamedCurve& named) {
    constexpr int steps = 200000;
    const ToneTable table(named.curve);
    double worst = 0;
    for (int i = 0; i <= steps; ++i) {
        const double stored = i / double{steps};
        const unsigned code = code8(table, static_cast<float>(named.curve.light(stored)));
        worst = std::max(worst, std::abs(stored * 255 - code) - 0.5);
    }
    return worst;
}

} // namespace

TEST(ToneTables, every8BitCodeIsKept) {
    for (const NamedCurve& named : curves())
        expectEvery8BitCodeBack(named);
}

TEST(ToneTables, every16BitCodeIsKeptWithinItsTolerance) {
    for (const NamedCurve& named : curves())
        EXPECT_LE(worst16BitCode(ToneTable(named.curve)), named.codes) << named.name;
}

TEST(ToneTables, only16BitCodesBelow30Change) {
    const ToneTable table(power(2.2));
    for (int code = 30; code < 65536; ++code)
        EXPECT_EQ(code16(table, table.light16()[code]), static_cast<unsigned>(code));
}

TEST(ToneTables, theChoiceOfACodeIsWithinItsToleranceOfExactRounding) {
    for (const NamedCurve& named : curves())
        EXPECT_LE(worstDecision(named), named.decision) << named.name;
}

TEST(ToneTables, installedProfilesKeepTheirCodes) {
    const std::vector<NamedCurve> installed = installedCurves();
    if (installed.empty())
        GTEST_SKIP() << "the package icc-profiles-free is not installed";
    for (const NamedCurve& named : installed) {
        expectEvery8BitCodeBack(named);
        EXPECT_LE(worst16BitCode(ToneTable(named.curve)), named.codes) << named.name;
        EXPECT_LE(worstDecision(named), named.decision) << named.name;
    }
}

TEST(ToneTables, allAcceptedCurvesKeepEvery8BitCode) {
    int taken = 0;
    for (double exponent = 0.1; exponent < 4; exponent += 0.01) {
        const auto profile = ColorProfile::fromGamma(exponent, {}, ColorModel::gray);
        if (const auto plain = plainToneCurves(*profile)) {
            expectEvery8BitCodeBack({std::to_string(exponent), plain->front()});
            ++taken;
        }
    }
    EXPECT_GT(taken, 200); // includes the exponents that pictures have
    EXPECT_LT(taken, 350); // some are refused
}

TEST(ToneTables, theTablesHaveTheValuesOfTheCurve) {
    const ToneTable table(power(1.8));
    ASSERT_EQ(table.light16().size(), 65536u);
    ASSERT_EQ(table.storedFraction().size(), toneTableSize);
    EXPECT_FLOAT_EQ(table.light8[100], static_cast<float>(std::pow(100 / 255.0, 1.8)));
    EXPECT_FLOAT_EQ(table.light16()[1234], static_cast<float>(std::pow(1234 / 65535.0, 1.8)));
    EXPECT_FLOAT_EQ(table.storedFraction()[1000], static_cast<float>(std::pow(1000 / 4095.0, 2 / 1.8)));
    EXPECT_EQ(table.stored8[1000], std::lround(255 * std::pow(1000 / 4095.0, 2 / 1.8)));
}

TEST(ToneTables, theEndsAreBlackAndWhite) {
    for (const NamedCurve& named : curves()) {
        const ToneTable table(named.curve);
        EXPECT_EQ(table.light8[0], 0) << named.name;
        EXPECT_EQ(table.light8[255], 1) << named.name;
        EXPECT_EQ(table.stored8[0], 0) << named.name;
        EXPECT_EQ(table.stored8[toneTableSize - 1], 255) << named.name;
        EXPECT_EQ(table.stored8.back(), 255) << named.name;
        EXPECT_EQ(table.storedFraction().front(), 0) << named.name;
        EXPECT_EQ(table.storedFraction().back(), 1) << named.name;
    }
}

TEST(ToneTables, channelsWithEqualCurvesShareATable) {
    const auto same = toneTables(nullptr, ColorModel::rgb);
    EXPECT_EQ(&(*same)[0], &(*same)[2]);
    const auto profile = ColorProfile::fromICC(
        matrixProfile(curveOfSamples({}), curveOfSamples({512}), curveOfSamples({})), ColorModel::rgb);
    const auto mixed = toneTables(&*profile, ColorModel::rgb);
    EXPECT_EQ(&(*mixed)[0], &(*mixed)[2]);
    EXPECT_NE(&(*mixed)[0], &(*mixed)[1]);
    EXPECT_FLOAT_EQ((*mixed)[1].light8[51], 0.04f);
}

TEST(ToneTables, theTablesOfTheLastProfilesAreCached) {
    const auto first = toneTables(nullptr, ColorModel::rgb);
    const auto adobeRGB = ColorProfile::fromICC(ColorProfile::adobeRGB().bytes(), ColorModel::rgb);
    const auto second = toneTables(&*adobeRGB, ColorModel::rgb);
    EXPECT_NE(first, second);
    EXPECT_EQ(toneTables(nullptr, ColorModel::rgb), first);
    const ColorProfile sameBytes = ColorProfile::adobeRGB();
    EXPECT_EQ(toneTables(&sameBytes, ColorModel::rgb), second);
    EXPECT_EQ(toneTables(nullptr, ColorModel::gray)->channels.size(), 1u);
}

TEST(ToneTables, theCacheIsLimited) {
    const auto sRGB = toneTables(nullptr, ColorModel::rgb);
    std::vector<std::weak_ptr<const ToneTables>> made;
    for (double exponent = 1; exponent < 2; exponent += 0.1) {
        const auto profile = ColorProfile::fromGamma(exponent, {}, ColorModel::gray);
        made.push_back(toneTables(&*profile, ColorModel::gray));
    }
    EXPECT_LE(std::ranges::count_if(made, [](const auto& tables) { return !tables.expired(); }), 4);
    EXPECT_NE(toneTables(nullptr, ColorModel::rgb), sRGB);
}

TEST(ToneTables, severalThreadsGetTheSameTables) {
    const auto profile = ColorProfile::fromGamma(1.234, sRGBChromaticities, ColorModel::rgb);
    std::array<const float*, 4> light{};
    std::vector<std::thread> threads;
    for (const float*& mine : light)
        threads.emplace_back([&] { mine = (*toneTables(&*profile, ColorModel::rgb))[1].light16().data(); });
    for (std::thread& thread : threads)
        thread.join();
    for (const float* other : light)
        EXPECT_EQ(other, light.front());
}

} // namespace kestrine
