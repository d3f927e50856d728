#include "platform/coregraphics/FilteredRows.h"

#include "platform/coregraphics/RowsAhead.h"
#include "tests/platform/coregraphics/NumberedRows.h"

#include <gtest/gtest.h>

namespace kestrine {
namespace {

constexpr std::uint32_t width = 1000, height = 1000;

struct FilteredRowsTest : testing::Test {
    const CrewScope crew{std::make_shared<Crew>(2)};
    std::thread::id reader;
    const SampleConversion conversion{RowFormat{width, height, ColorModel::gray}, width, SampleDepth::bits8,
                                      Light::stored, nullptr};

    std::unique_ptr<FilteredRows> filtered(std::uint32_t outHeight,
                                           NumberedRows::End end = NumberedRows::End::none,
                                           std::uint32_t endRow = 0) {
        return FilteredRows::create(
            std::make_unique<NumberedRows>(width, height, end, endRow, reader), conversion,
            FilterWeights(ResampleFilter::lanczos, AxisMap::filling(height, outHeight), height));
    }

    /// The first sample of each row.
    static std::vector<float> firstSamples(FilteredRows& rows, std::uint32_t count) {
        std::vector<float> samples;
        while (samples.size() < count) {
            const Result<std::span<const FloatRow>> next = rows.next();
            EXPECT_TRUE(next);
            for (const FloatRow& row : *next) {
                EXPECT_EQ(row[0], row[width - 1]);
                samples.push_back(row[0]);
            }
        }
        return samples;
    }
};

TEST_F(FilteredRowsTest, areTheSameWithAndWithoutACrew) {
    for (const std::uint32_t outHeight : {1U, 7U, 8U, 9U, 333U, 1000U, 2500U}) {
        const std::vector<float> ahead = firstSamples(*filtered(outHeight), outHeight);
        const CrewScope alone(nullptr);
        EXPECT_EQ(firstSamples(*filtered(outHeight), outHeight), ahead) << outHeight;
    }
}

TEST_F(FilteredRowsTest, returnTheFailureOfTheirInput) {
    const auto rows = filtered(500, NumberedRows::End::failure, 700);
    Result<std::span<const FloatRow>> next = rows->next();
    for (int i = 0; next && i < 500; ++i)
        next = rows->next();
    ASSERT_FALSE(next);
    EXPECT_EQ(next.failure().text, "row 700");
}

TEST_F(FilteredRowsTest, rethrowExceptionsOfTheirInput) {
    const auto rows = filtered(500, NumberedRows::End::exception, 3);
    EXPECT_THROW(rows->next(), std::bad_alloc);
}

TEST_F(FilteredRowsTest, canBeDestroyedBeforeTheEnd) {
    const auto rows = filtered(500);
    EXPECT_TRUE(rows->next());
}

} // namespace
} // namespace kestrine
