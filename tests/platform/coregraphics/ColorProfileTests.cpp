#include "platform/coregraphics/ColorProfile.h"

#include "tests/platform/coregraphics/ProfileBuilder.h"
#include "tests/support/TemporaryFolder.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <thread>

namespace kestrine {

using namespace testing;

namespace {

Bytes copyOf(const ColorProfile& profile) { return {profile.bytes().begin(), profile.bytes().end()}; }

bool contains(ByteView bytes, ByteView part) { return !std::ranges::search(bytes, part).empty(); }

Bytes linearCurve() { return curveOfSamples({}); }

const std::vector<Lab> eightGrays = {{0, 0, 0},  {20, 0, 0}, {30, 0, 0}, {40, 0, 0},
                                     {50, 0, 0}, {60, 0, 0}, {80, 0, 0}, {100, 0, 0}};

void expectColor(const std::array<double, 3>& actual, const std::array<double, 3>& expected) {
    for (std::size_t i = 0; i < 3; ++i)
        EXPECT_NEAR(actual[i], expected[i], 0.0002) << i;
}

/// Invalid RGB profiles, each with one error.
std::vector<std::pair<std::string, Bytes>> invalidProfiles() {
    const Bytes good = copyOf(ColorProfile::sRGB());
    std::vector<std::pair<std::string, Bytes>> invalid;
    const auto add = [&](std::string what, auto change) {
        Bytes bytes = good;
        change(bytes);
        invalid.emplace_back(std::move(what), std::move(bytes));
    };
    const auto addText = [&](std::string what, std::size_t at, std::string_view text) {
        add(std::move(what), [&](Bytes& bytes) { std::ranges::copy(text, bytes.begin() + at); });
    };
    add("no bytes", [](Bytes& bytes) { bytes.clear(); });
    add("only a header", [](Bytes& bytes) { bytes.resize(128); });
    add("cut off", [](Bytes& bytes) { bytes.pop_back(); });
    add("a size of nothing", [](Bytes& bytes) { put32(bytes, 0, 0); });
    add("a size below that of a header", [](Bytes& bytes) { put32(bytes, 0, 131); });
    add("a size beyond the bytes", [](Bytes& bytes) { put32(bytes, 0, 0xFFFFFFFF); });
    add("too many tags", [](Bytes& bytes) { put32(bytes, 128, 0x7FFFFFFF); });
    add("no tags", [](Bytes& bytes) { put32(bytes, 128, 0); });
    addText("no signature", 36, "ACSP");
    addText("another colour space", 16, "CMYK");
    addText("another connection space", 20, "RGB ");
    addText("a device link", 12, "link");
    addText("an abstract profile", 12, "abst");
    addText("a profile of named colours", 12, "nmcl");
    return invalid;
}

} // namespace

TEST(ColorProfile, aProfileIsStoredUnchanged) {
    const auto again = ColorProfile::fromICC(ColorProfile::adobeRGB().bytes(), ColorModel::rgb);
    ASSERT_TRUE(again);
    EXPECT_EQ(*again, ColorProfile::adobeRGB());
    EXPECT_EQ(again->model(), ColorModel::rgb);
}

TEST(ColorProfile, bytesAfterTheProfileAreRemoved) {
    Bytes padded = copyOf(ColorProfile::sRGB());
    padded.resize(padded.size() + 1000);
    EXPECT_EQ(ColorProfile::fromICC(padded, ColorModel::rgb), ColorProfile::sRGB());
}

TEST(ColorProfile, invalidProfilesAreRefusedAndNothingIsPrinted) {
    ::testing::internal::CaptureStderr();
    ::testing::internal::CaptureStdout();
    for (const auto& [what, bytes] : invalidProfiles())
        EXPECT_FALSE(ColorProfile::fromICC(bytes, ColorModel::rgb)) << what;
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "");
}

TEST(ColorProfile, aProfileForAnotherModelIsRefused) {
    EXPECT_FALSE(ColorProfile::fromICC(ColorProfile::sRGB().bytes(), ColorModel::gray));
    const Bytes gray = grayProfile(linearCurve());
    EXPECT_TRUE(ColorProfile::fromICC(gray, ColorModel::gray));
    EXPECT_FALSE(ColorProfile::fromICC(gray, ColorModel::rgb));
}

TEST(ColorProfile, aProfileLargerThan16MiBIsRefused) {
    const auto padded = [](std::size_t size) {
        Bytes bytes = copyOf(ColorProfile::sRGB());
        bytes.resize(size);
        put32(bytes, 0, static_cast<std::uint32_t>(size));
        return ColorProfile::fromICC(bytes, ColorModel::rgb).has_value();
    };
    EXPECT_TRUE(padded(std::size_t{16} << 20));
    EXPECT_FALSE(padded((std::size_t{16} << 20) + 1));
}

TEST(ColorProfile, everyClassOfPictureProfilesIsAccepted) {
    for (const char* deviceClass : {"scnr", "mntr", "prtr", "spac"}) {
        Bytes bytes = copyOf(ColorProfile::sRGB());
        std::ranges::copy(std::string_view(deviceClass), bytes.begin() + 12);
        EXPECT_TRUE(ColorProfile::fromICC(bytes, ColorModel::rgb)) << deviceClass;
    }
}

TEST(ColorProfile, aProfileThatNoConversionCanUseIsRefused) {
    const Bytes curve = linearCurve();
    const ProfileTag color = {"rXYZ", colorTag(0.4, 0.2, 0.1)};
    const std::vector<std::vector<ProfileTag>> incomplete = {
        {{"rTRC", curve}, {"gTRC", curve}, {"bTRC", curve}},
        {{"rTRC", curve}, {"gTRC", curve}, color, {"gXYZ", color.content}, {"bXYZ", color.content}},
        {{"rTRC", {}},
         {"gTRC", curve},
         {"bTRC", curve},
         color,
         {"gXYZ", color.content},
         {"bXYZ", color.content}},
        {{"rTRC", curve}, {"gTRC", curve}, {"bTRC", curve}, color, {"gXYZ", color.content}, {"bXYZ", curve}},
        {{"A2B0", tableOfCorners(4, std::vector<Lab>(16))}},
        {{"A2B0", curve}},
    };
    for (std::size_t i = 0; i < incomplete.size(); ++i)
        EXPECT_FALSE(ColorProfile::fromICC(makeICC("RGB ", "mntr", "Lab ", incomplete[i]), ColorModel::rgb))
            << i;
}

TEST(ColorProfile, curvesWithMissingSamplesAreRefused) {
    Bytes curve = curveOfSamples({0, 30000, 65535});
    put32(curve, 8, 4);
    EXPECT_FALSE(ColorProfile::fromICC(grayProfile(curve), ColorModel::gray));
    put32(curve, 8, 0xFFFFFFFF);
    EXPECT_FALSE(ColorProfile::fromICC(grayProfile(curve), ColorModel::gray));
    EXPECT_FALSE(ColorProfile::fromICC(grayProfile(curveOfFormula(4, {2.4, 1, 0, 1})), ColorModel::gray));
    EXPECT_FALSE(
        ColorProfile::fromICC(grayProfile(curveOfFormula(5, {1, 1, 0, 0, 0, 0, 0})), ColorModel::gray));
}

TEST(ColorProfile, aTableOfColoursIsSufficient) {
    const Bytes icc = makeICC("RGB ", "mntr", "Lab ", {{"A2B0", tableOfCorners(3, eightGrays)}});
    EXPECT_TRUE(ColorProfile::fromICC(icc, ColorModel::rgb));
}

TEST(ColorProfile, installedProfilesAreAcceptedForTheirModel) {
    const std::vector<std::string> paths = installedProfiles();
    if (paths.empty())
        GTEST_SKIP() << "the package icc-profiles-free is not installed";
    for (const std::string& path : paths) {
        const Bytes icc = readFileBytes(path);
        const std::string space(icc.begin() + 16, icc.begin() + 20);
        EXPECT_EQ(ColorProfile::fromICC(icc, ColorModel::rgb).has_value(), space == "RGB ") << path;
        EXPECT_EQ(ColorProfile::fromICC(icc, ColorModel::gray).has_value(), space == "GRAY") << path;
    }
}

// The expected primaries (under D50) are those of the published profiles of both spaces.
TEST(ColorProfile, sRGBHasItsPublishedPrimaries) {
    const ColorProfile profile = ColorProfile::sRGB();
    expectColor(colorOf(profile.bytes(), "rXYZ"), {0.43607, 0.22249, 0.01392});
    expectColor(colorOf(profile.bytes(), "gXYZ"), {0.38515, 0.71687, 0.09708});
    expectColor(colorOf(profile.bytes(), "bXYZ"), {0.14307, 0.06061, 0.71410});
    EXPECT_EQ(profile.model(), ColorModel::rgb);
    EXPECT_EQ(profile.bytes()[8], 4);
    EXPECT_EQ(profile.bytes()[9], 0x30);
}

TEST(ColorProfile, adobeRGBHasItsPublishedPrimariesAndExponent) {
    const ColorProfile profile = ColorProfile::adobeRGB();
    expectColor(colorOf(profile.bytes(), "rXYZ"), {0.60974, 0.31111, 0.01947});
    expectColor(colorOf(profile.bytes(), "gXYZ"), {0.20528, 0.62567, 0.06087});
    expectColor(colorOf(profile.bytes(), "bXYZ"), {0.14919, 0.06322, 0.74457});
    EXPECT_EQ(tagOf(profile.bytes(), "rTRC"), curveOfSamples({563}));
}

TEST(ColorProfile, fromSRGBCurveChangesOnlyThePrimaries) {
    constexpr Chromaticities displayP3 = {{0.3127, 0.3290}, {0.680, 0.320}, {0.265, 0.690}, {0.150, 0.060}};
    const auto profile = ColorProfile::fromSRGBCurve(displayP3, "Display P3");
    ASSERT_TRUE(profile);
    expectColor(colorOf(profile->bytes(), "rXYZ"), {0.51512, 0.24120, -0.00105});
    EXPECT_EQ(tagOf(profile->bytes(), "rTRC"), tagOf(ColorProfile::sRGB().bytes(), "rTRC"));
    EXPECT_FALSE(ColorProfile::fromSRGBCurve({{0.9, 0.9}, {1, 0}, {0, 1}, {0, 0}}, "none"));
}

TEST(ColorProfile, madeProfilesHaveADescription) {
    // Version 4 stores text in UTF-16, version 2 in ASCII.
    EXPECT_TRUE(
        contains(tagOf(ColorProfile::sRGB().bytes(), "desc").value(), Bytes{0, 's', 0, 'R', 0, 'G', 0, 'B'}));
    EXPECT_TRUE(contains(tagOf(ColorProfile::adobeRGB().bytes(), "desc").value(),
                         bytesOf("Adobe RGB (1998) compatible")));
}

TEST(ColorProfile, madeProfilesHaveAConstantDate) {
    const Bytes firstOfJuly2020 = {0x07, 0xE4, 0, 7, 0, 1, 0, 0, 0, 0, 0, 0};
    for (const ColorProfile& profile :
         {ColorProfile::sRGB(), ColorProfile::adobeRGB(),
          *ColorProfile::fromGamma(1.8, sRGBChromaticities, ColorModel::rgb),
          *ColorProfile::fromGamma(1.8, sRGBChromaticities, ColorModel::gray)}) {
        const ByteView date = profile.bytes().subspan(24, 12);
        EXPECT_EQ(Bytes(date.begin(), date.end()), firstOfJuly2020);
    }
    EXPECT_EQ(ColorProfile::fromGamma(2.2, sRGBChromaticities, ColorModel::rgb),
              ColorProfile::fromGamma(2.2, sRGBChromaticities, ColorModel::rgb));
}

TEST(ColorProfile, fromGammaUsesTheOldVersionIfItStoresTheExponentExactly) {
    const auto exact = ColorProfile::fromGamma(1.75, sRGBChromaticities, ColorModel::rgb);
    const auto fine = ColorProfile::fromGamma(2.2, sRGBChromaticities, ColorModel::rgb);
    ASSERT_TRUE(exact && fine);
    EXPECT_EQ(exact->bytes()[8], 2);
    EXPECT_EQ(tagOf(exact->bytes(), "gTRC"), curveOfSamples({448}));
    EXPECT_EQ(fine->bytes()[8], 4);
    EXPECT_EQ(tagOf(fine->bytes(), "gTRC"), curveOfFormula(0, {2.2}));
}

TEST(ColorProfile, genericRGBHasGamma18AndTheP22PhosphorsOfEuropeanMonitors) {
    const ColorProfile generic = ColorProfile::genericRGB();
    EXPECT_EQ(ColorProfile::fromICC(generic.bytes(), ColorModel::rgb), generic);
    EXPECT_EQ(tagOf(generic.bytes(), "rTRC"), curveOfFormula(0, {1.8}));
    // The chromaticities of the phosphors under D65, adapted to D50 by Bradford's matrix.
    expectColor(colorOf(generic.bytes(), "rXYZ"), {0.4543, 0.2419, 0.0149});
    expectColor(colorOf(generic.bytes(), "gXYZ"), {0.3533, 0.6737, 0.0906});
    expectColor(colorOf(generic.bytes(), "bXYZ"), {0.1566, 0.0844, 0.7194});
}

TEST(ColorProfile, fromGammaStoresThePrimaries) {
    const auto profile = ColorProfile::fromGamma(2.2, sRGBChromaticities, ColorModel::rgb);
    ASSERT_TRUE(profile);
    for (const char* tag : {"rXYZ", "gXYZ", "bXYZ"})
        EXPECT_EQ(colorOf(profile->bytes(), tag), colorOf(ColorProfile::sRGB().bytes(), tag)) << tag;
}

TEST(ColorProfile, fromGammaAcceptsImaginaryPrimaries) {
    const Chromaticities wholeVision = {{0.32168, 0.33767}, {0.7347, 0.2653}, {0, 1}, {0.0001, -0.077}};
    EXPECT_TRUE(ColorProfile::fromGamma(1, wholeVision, ColorModel::rgb));
}

TEST(ColorProfile, fromGammaIgnoresThePrimariesOfGreyProfiles) {
    const auto profile = ColorProfile::fromGamma(1.0, {}, ColorModel::gray);
    ASSERT_TRUE(profile);
    EXPECT_EQ(profile->model(), ColorModel::gray);
    EXPECT_EQ(ColorProfile::fromICC(profile->bytes(), ColorModel::gray), profile);
}

TEST(ColorProfile, fromGammaRefusesImplausibleExponents) {
    for (const double gamma : {0.0, -2.2, 0.09, 10.1, 1e300, std::nan(""), HUGE_VAL, -HUGE_VAL}) {
        EXPECT_FALSE(ColorProfile::fromGamma(gamma, sRGBChromaticities, ColorModel::rgb)) << gamma;
        EXPECT_FALSE(ColorProfile::fromGamma(gamma, sRGBChromaticities, ColorModel::gray)) << gamma;
    }
}

TEST(ColorProfile, fromGammaRefusesImplausiblePrimaries) {
    const Chromaticities good = sRGBChromaticities;
    const double nan = std::nan("");
    const Chromaticities bad[] = {
        {},
        {good.white, good.red, good.red, good.red},
        {good.white, good.red, good.green, {0.47, 0.465}}, // all on one line
        {{0.55, 0.45}, good.red, good.green, good.blue},   // the white outside the triangle
        {{0.3127, 0}, good.red, good.green, good.blue},
        {good.white, {nan, 0.33}, good.green, good.blue},
        {{nan, nan}, good.red, good.green, good.blue},
        {good.white, {HUGE_VAL, 0.33}, good.green, good.blue},
        {good.white, {0.31, 0.328}, {0.315, 0.329}, {0.3127, 0.33}}, // hardly any colour
        {good.white, {21474.8, 0.33}, {0.3, 21474.8}, {0, 0}},
        {good.white, {-1e6, 0.3289}, {1e6, 0.3289}, {0.3127, 0.3291}},
        {{0.19, 0.15}, good.red, good.green, good.blue}, // a white that is deep blue
        {good.white, {0.64, -2.1}, good.green, good.blue},
        {good.white, good.red, {0.3, 2.1}, good.blue},
        {good.white, good.red, good.green, {-2.1, 0.06}},
    };
    for (std::size_t i = 0; i < std::size(bad); ++i)
        EXPECT_FALSE(ColorProfile::fromGamma(2.2, bad[i], ColorModel::rgb)) << i;
}

TEST(ColorProfile, severalThreadsGetTheSameProfile) {
    std::vector<std::thread> threads;
    std::array<std::optional<ColorProfile>, 4> profiles;
    for (auto& profile : profiles)
        threads.emplace_back([&profile] { profile = ColorProfile::adobeRGB(); });
    for (std::thread& thread : threads)
        thread.join();
    for (const auto& profile : profiles)
        EXPECT_EQ(profile->bytes().data(), ColorProfile::adobeRGB().bytes().data());
}

} // namespace kestrine
