#include "platform/coregraphics/ToneMapping.h"

#include "tests/support/Pictures.h"

#include <cmath>
#include <gtest/gtest.h>

namespace kestrine {

namespace {

using namespace testing;

/// One pixel, mapped. Samples are from 0 to 1.
std::array<double, 3> mapped(HDRTransfer transfer, std::array<double, 3> stored, double peak = defaultPeak) {
    const RowFormat format{.width = 1, .height = 1, .depth = SampleDepth::bits16};
    const PixelBuffer picture = makePicture(format, [&](unsigned, unsigned, std::size_t channel) {
        return static_cast<unsigned>(std::lround(stored[channel] * 65535));
    });
    RowSourcePointer rows = rowsInSDR(rowsOfPixels(std::make_shared<PixelBuffer>(picture)), {transfer, peak});
    const Result<PixelBuffer> result = readAllRows(*rows);
    EXPECT_TRUE(result);
    std::array<double, 3> samples{};
    for (std::size_t c = 0; c < 3; ++c)
        samples[c] = sampleAt(*result, 0, 0, c) / 65535.0;
    return samples;
}

double mappedGrey(HDRTransfer transfer, double stored, double peak = defaultPeak) {
    const auto pixel = mapped(transfer, {stored, stored, stored}, peak);
    EXPECT_EQ(pixel[0], pixel[1]);
    EXPECT_EQ(pixel[0], pixel[2]);
    return pixel[0];
}

double lightOfSRGB(double stored) {
    return stored <= 0.04045 ? stored / 12.92 : std::pow((stored + 0.055) / 1.055, 2.4);
}

// Codes of PQ, from the formulas of SMPTE ST 2084.
constexpr double pq50 = 0.440282, pq203 = 0.580689, pq400 = 0.652579, pq1000 = 0.751827;

} // namespace

TEST(ToneMapping, blackAndThePeakBecomeTheEnds) {
    EXPECT_EQ(mappedGrey(HDRTransfer::pq, 0), 0);
    EXPECT_NEAR(mappedGrey(HDRTransfer::pq, pq1000), 1, 1e-4);
    EXPECT_EQ(mappedGrey(HDRTransfer::pq, 1), 1);
    EXPECT_EQ(mappedGrey(HDRTransfer::hlg, 0), 0);
    EXPECT_NEAR(mappedGrey(HDRTransfer::hlg, 1), 1, 1e-4);
}

TEST(ToneMapping, lightBelowTheKneeIsRelativeToWhite) {
    EXPECT_NEAR(lightOfSRGB(mappedGrey(HDRTransfer::pq, pq50)), 50 / 203.0, 5e-4);
    // HLG: a third of the square, then the system of a display of 1000 cd/m2.
    EXPECT_NEAR(lightOfSRGB(mappedGrey(HDRTransfer::hlg, 0.4)), 1000 * std::pow(0.4 * 0.4 / 3, 1.2) / 203,
                5e-4);
}

TEST(ToneMapping, highlightsAreCompressed) {
    // From a computation of the curve of BT.2390 in Python.
    EXPECT_NEAR(lightOfSRGB(mappedGrey(HDRTransfer::pq, pq203)), 0.7835, 1e-3);
    EXPECT_NEAR(lightOfSRGB(mappedGrey(HDRTransfer::pq, pq400)), 0.9537, 1e-3);
}

TEST(ToneMapping, withoutHighlightsNothingIsCompressed) {
    EXPECT_NEAR(mappedGrey(HDRTransfer::pq, pq203, 203), 1, 1e-4);
    EXPECT_NEAR(lightOfSRGB(mappedGrey(HDRTransfer::pq, pq50, 100)), 50 / 203.0, 5e-4);
}

TEST(ToneMapping, brighterNeverBecomesDarker) {
    for (const HDRTransfer transfer : {HDRTransfer::pq, HDRTransfer::hlg}) {
        double before = 0;
        for (double stored = 0; stored <= 1; stored += 1 / 512.0) {
            const double now = mappedGrey(transfer, stored);
            EXPECT_GE(now, before) << stored;
            before = now;
        }
    }
}

TEST(ToneMapping, coloursKeepTheirProportions) {
    const auto pixel = mapped(HDRTransfer::pq, {pq400, pq50, 0});
    EXPECT_NEAR(lightOfSRGB(pixel[0]) / lightOfSRGB(pixel[1]), 8, 0.05);
    EXPECT_EQ(pixel[2], 0);
}

TEST(ToneMapping, samplesOf8BitsAreMappedAsThoseOf16) {
    for (const HDRTransfer transfer : {HDRTransfer::pq, HDRTransfer::hlg})
        for (unsigned stored = 0; stored < 256; ++stored) {
            const auto picture = std::make_shared<PixelBuffer>(
                makePicture({.width = 1, .height = 1}, [stored](auto, auto, auto) { return stored; }));
            RowSourcePointer rows = rowsInSDR(rowsOfPixels(picture), {transfer, defaultPeak});
            const Result<PixelBuffer> result = readAllRows(*rows);
            ASSERT_TRUE(result);
            EXPECT_NEAR(sampleAt(*result, 0, 0, 1), 255 * mappedGrey(transfer, stored / 255.0), 0.51);
        }
}

TEST(ToneMapping, alphaStays) {
    const RowFormat format{.width = 1, .height = 1, .hasAlpha = true, .depth = SampleDepth::bits16};
    const PixelBuffer picture = makePicture(format, [](auto, auto, auto) { return 30000; });
    RowSourcePointer rows =
        rowsInSDR(rowsOfPixels(std::make_shared<PixelBuffer>(picture)), {HDRTransfer::hlg, defaultPeak});
    const Result<PixelBuffer> result = readAllRows(*rows);
    ASSERT_TRUE(result);
    EXPECT_EQ(sampleAt(*result, 0, 0, 3), 30000u);
    EXPECT_NE(sampleAt(*result, 0, 0, 0), 30000u);
}

} // namespace kestrine
