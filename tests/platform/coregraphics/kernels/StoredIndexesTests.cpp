#include "platform/coregraphics/kernels/StoredIndexes.h"

#include "platform/coregraphics/kernels/StoredIndexes_reference.h"
#include "tests/platform/coregraphics/kernels/EveryTarget.h"

#include <cmath>
#include <limits>
#include <vector>

namespace kestrine::kernels {

namespace {

/// Values below, inside and above 0..1 in fine steps, and special numbers.
std::vector<float> variousValues() {
    std::vector<float> values = {std::nanf(""), -std::numeric_limits<float>::infinity(),
                                 std::numeric_limits<float>::infinity(), -0.0F, 1e-40F};
    for (int i = -300; i < 5000; ++i)
        values.push_back(static_cast<float>(i) / 4095.0F);
    return values;
}

} // namespace

TEST(StoredIndexes, everyTargetGivesTheIndexesOfThePlainLoops) {
    const std::vector<float> values = variousValues();
    testing::onEveryTarget([&] {
        for (const float top : {255.0F, 4095.0F, 65535.0F}) {
            std::vector<std::uint16_t> indexes(values.size()), expected(values.size());
            squareRootIndexes(values.data(), values.size(), top, indexes.data());
            reference::squareRootIndexes(values.data(), values.size(), top, expected.data());
            ASSERT_EQ(indexes, expected) << "square roots up to " << top;
            linearIndexes(values.data(), values.size(), top, indexes.data());
            reference::linearIndexes(values.data(), values.size(), top, expected.data());
            ASSERT_EQ(indexes, expected) << "linear up to " << top;
        }
    });
}

TEST(StoredIndexes, valuesAreClampedAndNaNIsZero) {
    const float values[] = {std::nanf(""), -1.0F, 0.0F, 0.25F, 1.0F, 7.0F};
    std::uint16_t indexes[6];
    linearIndexes(values, 6, 255.0F, indexes);
    EXPECT_EQ(std::vector<std::uint16_t>(indexes, indexes + 6),
              (std::vector<std::uint16_t>{0, 0, 0, 64, 255, 255}));
    squareRootIndexes(values, 6, 4095.0F, indexes);
    EXPECT_EQ(std::vector<std::uint16_t>(indexes, indexes + 6),
              (std::vector<std::uint16_t>{0, 0, 0, 2048, 4095, 4095}));
}

} // namespace kestrine::kernels
