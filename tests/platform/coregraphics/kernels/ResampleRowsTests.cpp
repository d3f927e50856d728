#include "platform/coregraphics/kernels/ResampleRows.h"

#include "platform/coregraphics/kernels/ResampleRows_reference.h"
#include "tests/platform/coregraphics/kernels/EveryTarget.h"

#include <random>
#include <vector>

namespace kestrine::kernels {

namespace {

std::vector<float> randomFloats(std::size_t count, unsigned seed) {
    std::mt19937 generator(seed);
    std::uniform_real_distribution<float> distribution(-1.0F, 2.0F);
    std::vector<float> floats(count);
    for (float& value : floats)
        value = distribution(generator);
    return floats;
}

constexpr std::size_t oddLengths[] = {1, 2, 3, 7, 8, 9, 15, 16, 17, 31, 33, 63, 64, 65, 1000};

/// `pixels` results of `taps` weights each, every one a pixel further.
struct WeightFixture {
    std::vector<std::uint32_t> firsts;
    std::vector<std::size_t> starts = {0};
    std::vector<float> weights;

    WeightFixture(std::size_t pixels, std::size_t taps) : weights(randomFloats(pixels * taps, 7)) {
        for (std::size_t i = 0; i < pixels; ++i) {
            firsts.push_back(static_cast<std::uint32_t>(i));
            starts.push_back((i + 1) * taps);
        }
    }
    PixelWeights view() const { return {firsts, starts, weights.data()}; }
};

} // namespace

TEST(ResampleRows, addingAWeightedRowGivesTheBitsOfThePlainLoopAtEveryLength) {
    testing::onEveryTarget([] {
        for (const std::size_t length : oddLengths)
            for (const std::size_t rows : {0, 1, 2, 7}) {
                std::vector<std::vector<float>> sums, expected;
                std::vector<float*> targets, expectedTargets;
                for (std::size_t k = 0; k < rows; ++k)
                    sums.push_back(randomFloats(length + 1, static_cast<unsigned>(k)));
                expected = sums;
                for (std::size_t k = 0; k < rows; ++k) {
                    targets.push_back(sums[k].data());
                    expectedTargets.push_back(expected[k].data());
                }
                const std::vector<float> row = randomFloats(length, 99), weights = randomFloats(rows, 5);
                addWeightedRow(targets, weights, row.data(), length);
                reference::addWeightedRow(expectedTargets, weights, row.data(), length);
                ASSERT_EQ(sums, expected) << length << " samples, " << rows << " sums";
            }
    });
}

TEST(ResampleRows, weighingPixelsGivesTheBitsOfThePlainLoopForEveryChannelCount) {
    testing::onEveryTarget([] {
        for (std::size_t channels = 1; channels <= 4; ++channels)
            for (const std::size_t taps : {1, 2, 3, 4, 5, 8, 13, 16, 31})
                for (const std::size_t pixels : {1, 2, 3, 16, 17, 65}) {
                    const WeightFixture fixture(pixels, taps);
                    const std::vector<float> row = randomFloats((pixels + taps) * channels + rowPadding, 3);
                    std::vector<float> result(pixels * channels + rowPadding, -5.0F), expected = result;
                    weighPixels(row.data(), channels, fixture.view(), result.data());
                    reference::weighPixels(row.data(), channels, fixture.view(), expected.data());
                    result.resize(pixels * channels);
                    expected.resize(pixels * channels);
                    ASSERT_EQ(result, expected)
                        << channels << " channels, " << taps << " taps, " << pixels << " pixels";
                }
    });
}

} // namespace kestrine::kernels
