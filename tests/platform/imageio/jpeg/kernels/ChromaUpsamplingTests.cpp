#include "platform/imageio/jpeg/kernels/ChromaUpsampling.h"

#include "platform/imageio/jpeg/kernels/ChromaUpsampling_reference.h"
#include "tests/platform/coregraphics/kernels/EveryTarget.h"

#include <random>
#include <vector>

namespace kestrine::kernels {

namespace {

using Row = std::vector<std::uint8_t>;

constexpr std::size_t longest = 150;

/// Random samples; if `extreme`, only 0 and 255.
Row randomRow(std::size_t width, bool extreme, std::mt19937& random) {
    Row row(width);
    for (auto& sample : row)
        sample = static_cast<std::uint8_t>(extreme ? random() % 2 * 255 : random());
    return row;
}

/// Calls `test(nearRow, farRow, width)` with two rows of every length.
template <class Test>
void withRows(const Test& test) {
    std::mt19937 random(1);
    for (std::size_t width = 1; width <= longest; ++width)
        for (const bool extreme : {false, true}) {
            const Row nearRow = randomRow(width, extreme, random), farRow = randomRow(width, extreme, random);
            test(nearRow, farRow, width);
        }
}

} // namespace

TEST(ChromaUpsampling, everyTargetSmoothsARowLikeThePlainLoops) {
    testing::onEveryTarget([] {
        withRows([](const Row& row, const Row&, std::size_t width) {
            Row result(2 * width + 1, 77), expected = result;
            upsampleH2V1Fancy(row.data(), width, result.data());
            reference::upsampleH2V1Fancy(row.data(), width, expected.data());
            ASSERT_EQ(result, expected) << width << " samples";
        });
    });
}

TEST(ChromaUpsampling, everyTargetSmoothsTwoRowsLikeThePlainLoops) {
    testing::onEveryTarget([] {
        withRows([](const Row& nearRow, const Row& farRow, std::size_t width) {
            Row result(2 * width + 1, 77), expected = result;
            upsampleH2V2Fancy(nearRow.data(), farRow.data(), width, result.data());
            reference::upsampleH2V2Fancy(nearRow.data(), farRow.data(), width, expected.data());
            ASSERT_EQ(result, expected) << width << " samples";
        });
    });
}

TEST(ChromaUpsampling, everyTargetSmoothsDownwardsLikeThePlainLoops) {
    testing::onEveryTarget([] {
        withRows([](const Row& nearRow, const Row& farRow, std::size_t width) {
            for (const bool isUpper : {false, true}) {
                Row result(width + 1, 77), expected = result;
                upsampleH1V2Fancy(nearRow.data(), farRow.data(), isUpper, width, result.data());
                reference::upsampleH1V2Fancy(nearRow.data(), farRow.data(), isUpper, width, expected.data());
                ASSERT_EQ(result, expected) << width << " samples";
            }
        });
    });
}

TEST(ChromaUpsampling, aStepIsSmoothedThreeToOneAndTheEdgesDoNotChange) {
    const Row row = {0, 0, 100, 100};
    Row result(8);
    upsampleH2V1Fancy(row.data(), row.size(), result.data());
    EXPECT_EQ(result, (Row{0, 0, 0, 25, 75, 100, 100, 100}));
}

TEST(ChromaUpsampling, roundingAlternatesBetweenPixelsAndBetweenRows) {
    const Row row = {0, 2, 0}, above = {2, 2, 2};
    Row result(6);
    upsampleH2V1Fancy(row.data(), row.size(), result.data());
    EXPECT_EQ(result, (Row{0, 1, 1, 2, 0, 0})); // 2/4 is rounded up right of a sample and down left of it
    Row upper(3), lower(3);
    upsampleH1V2Fancy(row.data(), above.data(), true, row.size(), upper.data());
    upsampleH1V2Fancy(row.data(), above.data(), false, row.size(), lower.data());
    EXPECT_EQ(upper, (Row{0, 2, 0}));
    EXPECT_EQ(lower, (Row{1, 2, 1}));
}

TEST(ChromaUpsampling, replicateRepeatsEverySample) {
    std::mt19937 random(2);
    for (const int times : {1, 2, 3, 4})
        for (std::size_t width = 1; width <= longest; ++width) {
            const Row row = randomRow(width, false, random);
            const std::size_t pixels = width * static_cast<std::size_t>(times);
            Row result(pixels + 1, 77);
            replicate(row.data(), width, times, result.data());
            for (std::size_t i = 0; i < pixels; ++i)
                ASSERT_EQ(result[i], row[i / static_cast<std::size_t>(times)]) << "pixel " << i;
            ASSERT_EQ(result.back(), 77);
        }
}

} // namespace kestrine::kernels
