#include "kestrinectl/compare/StructuralSimilarity.h"
#include "tests/kestrinectl/compare/TestPlane.h"

#include <gtest/gtest.h>

#include <cmath>

namespace kestrine {
namespace {

/// The similarity in the window whose upper left pixel is (x, y), with one weight per pixel.
double similarityInWindow(const LumaPlane& a, const LumaPlane& b, std::size_t x, std::size_t y) {
    double weights = 0, meanA = 0, meanB = 0, varianceA = 0, varianceB = 0, covariance = 0;
    const auto each = [&](const auto& visit) {
        for (std::size_t j = 0; j < 11; ++j)
            for (std::size_t i = 0; i < 11; ++i) {
                const double dx = static_cast<double>(i) - 5, dy = static_cast<double>(j) - 5;
                visit(std::exp(-(dx * dx + dy * dy) / (2 * 1.5 * 1.5)), a.row(y + j)[x + i],
                      b.row(y + j)[x + i]);
            }
    };
    each([&](double weight, double, double) { weights += weight; });
    each([&](double weight, double first, double second) {
        meanA += weight / weights * first;
        meanB += weight / weights * second;
    });
    each([&](double weight, double first, double second) {
        varianceA += weight / weights * (first - meanA) * (first - meanA);
        varianceB += weight / weights * (second - meanB) * (second - meanB);
        covariance += weight / weights * (first - meanA) * (second - meanB);
    });
    const double c1 = 2.55 * 2.55, c2 = 7.65 * 7.65;
    return (2 * meanA * meanB + c1) * (2 * covariance + c2)
           / ((meanA * meanA + meanB * meanB + c1) * (varianceA + varianceB + c2));
}

/// The publication's formula, window by window.
double plainSimilarity(const LumaPlane& a, const LumaPlane& b) {
    double sum = 0;
    for (std::size_t y = 0; y + 11 <= a.height; ++y)
        for (std::size_t x = 0; x + 11 <= a.width; ++x)
            sum += similarityInWindow(a, b, x, y);
    return sum / ((a.width - 10.0) * (a.height - 10.0));
}

/// A plane with some of the other mixed in.
LumaPlane mixed(const LumaPlane& plane, const LumaPlane& other, float share) {
    LumaPlane result = plane;
    for (std::size_t i = 0; i < result.samples.size(); ++i)
        result.samples[i] = (1 - share) * plane.samples[i] + share * other.samples[i];
    return result;
}

TEST(StructuralSimilarity, itIsThatOfThePlainFormula) {
    for (const auto& [width, height] : {std::pair{11U, 11U}, {11U, 30U}, {40U, 11U}, {37U, 29U}}) {
        const LumaPlane picture = noisyPlane(width, height, 1), noise = noisyPlane(width, height, 2);
        for (const float share : {0.0F, 0.05F, 0.5F, 1.0F}) {
            const LumaPlane other = mixed(picture, noise, share);
            EXPECT_NEAR(structuralSimilarity(picture, other)->mean, plainSimilarity(picture, other), 1e-9)
                << width << " x " << height << ", " << share;
        }
    }
}

TEST(StructuralSimilarity, equalPicturesHaveExactlyOne) {
    const LumaPlane picture = noisyPlane(50, 40, 3);
    EXPECT_EQ(structuralSimilarity(picture, picture)->mean, 1);
    EXPECT_EQ(structuralSimilarity(flatPlane(20, 20, 0), flatPlane(20, 20, 0))->mean, 1);
}

TEST(StructuralSimilarity, flatPicturesDifferInLuminanceOnly) {
    const double c1 = 2.55 * 2.55, expected = (2 * 100 * 120 + c1) / (100 * 100 + 120 * 120 + c1);
    EXPECT_NEAR(structuralSimilarity(flatPlane(12, 12, 100), flatPlane(12, 12, 120))->mean, expected, 1e-9);
}

TEST(StructuralSimilarity, aNegativeHasANegativeOne) {
    LumaPlane negative = noisyPlane(30, 30, 4);
    for (float& sample : negative.samples)
        sample = 255 - sample;
    EXPECT_LT(structuralSimilarity(noisyPlane(30, 30, 4), negative)->mean, -0.5);
}

TEST(StructuralSimilarity, picturesWithoutAWindowOrOfDifferentSizesAreNotMeasured) {
    EXPECT_FALSE(structuralSimilarity(flatPlane(10, 50, 0), flatPlane(10, 50, 0)));
    EXPECT_FALSE(structuralSimilarity(flatPlane(50, 10, 0), flatPlane(50, 10, 0)));
    EXPECT_FALSE(structuralSimilarity(flatPlane(20, 21, 0), flatPlane(21, 20, 0)));
    EXPECT_FALSE(structuralSimilarity({}, {}));
}

TEST(StructuralSimilarity, theLossLiesWhereThePicturesDiffer) {
    LumaPlane changed = noisyPlane(200, 150, 5);
    changed.samples[120 * 200 + 70] += 100; // in the cell with column 2 and row 3
    const CellSums loss = structuralSimilarity(noisyPlane(200, 150, 5), changed)->loss;
    const CellSquare worst = greatestSquare(loss, 1);
    EXPECT_EQ(worst.column, 2U);
    EXPECT_EQ(worst.row, 3U);
    EXPECT_NEAR(loss.at(5, 0), 0, 1e-9);
}

} // namespace
} // namespace kestrine
