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

/// `pixels` results with `taps` weights each; the first source pixel of result i is i.
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

/// Random rows, and pointers to them for the kernels.
struct Rows {
    std::vector<std::vector<float>> rows;

    Rows(std::size_t count, std::size_t length, unsigned seed) {
        for (std::size_t r = 0; r < count; ++r)
            rows.push_back(randomFloats(length, seed + static_cast<unsigned>(r)));
    }
    std::vector<float*> pointers() {
        std::vector<float*> result;
        for (auto& row : rows)
            result.push_back(row.data());
        return result;
    }
    std::vector<const float*> sources() {
        const std::vector<float*> all = pointers();
        return {all.begin(), all.end()};
    }
    void shorten(std::size_t length) {
        for (auto& row : rows)
            row.resize(length);
    }
};

void expectSameResults(std::size_t rows, std::size_t channels, std::size_t pixels, std::size_t taps) {
    const WeightFixture fixture(pixels, taps);
    Rows sources(rows, (pixels + taps) * channels + rowPadding, 3);
    Rows results(rows, pixels * channels + rowPadding, 40), expected = results;
    weighRows(sources.sources(), channels, fixture.view(), results.pointers());
    reference::weighRows(sources.sources(), channels, fixture.view(), expected.pointers());
    results.shorten(pixels * channels);
    expected.shorten(pixels * channels);
    ASSERT_EQ(results.rows, expected.rows)
        << rows << " rows, " << channels << " channels, " << taps << " taps, " << pixels << " pixels";
}

} // namespace

TEST(ResampleRows, addWeightedRowsGivesTheBitsOfThePlainLoopsAtEveryLength) {
    testing::onEveryTarget([] {
        for (const std::size_t length : oddLengths)
            for (const std::size_t sumCount : {0, 1, 2, 7})
                for (std::size_t rowCount = 1; rowCount <= maxRowsAdded; ++rowCount) {
                    Rows sums(sumCount, length + 1, 0), expected = sums, rows(rowCount, length, 90);
                    const std::vector<float> weights = randomFloats(sumCount * rowCount, 5);
                    addWeightedRows(sums.pointers(), weights.data(), rows.sources(), length);
                    reference::addWeightedRows(expected.pointers(), weights.data(), rows.sources(), length);
                    ASSERT_EQ(sums.rows, expected.rows)
                        << length << " samples, " << sumCount << " sums, " << rowCount << " rows";
                }
    });
}

TEST(ResampleRows, weighRowsGivesTheBitsOfThePlainLoopsForEveryChannelCount) {
    testing::onEveryTarget([] {
        for (std::size_t channels = 1; channels <= 4; ++channels)
            for (const std::size_t taps : {1, 2, 3, 4, 5, 8, 13, 16, 31})
                for (const std::size_t pixels : {1, 2, 3, 16, 17, 65, 700})
                    expectSameResults(maxRowsWeighed, channels, pixels, taps);
    });
}

TEST(ResampleRows, weighRowsAcceptsAnyNumberOfRows) {
    testing::onEveryTarget([] {
        for (std::size_t rows = 1; rows < maxRowsWeighed; ++rows)
            expectSameResults(rows, 3, 17, 5);
    });
}

TEST(ResampleRows, aPixelCanUseMoreSourcePixelsThanFitAStretch) {
    testing::onEveryTarget([] {
        for (std::size_t channels = 1; channels <= 4; ++channels)
            for (const std::size_t taps : {127, 128, 129, 170, 171, 256, 257, 512, 513, 2000})
                expectSameResults(maxRowsWeighed, channels, 3, taps);
    });
}

} // namespace kestrine::kernels
