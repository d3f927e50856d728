#include "platform/coregraphics/RowsAhead.h"

#include "platform/coregraphics/PixelBuffer.h"
#include "platform/host/process/ProcessorCount.h"
#include "tests/platform/coregraphics/NumberedRows.h"

#include <gtest/gtest.h>

namespace kestrine {
namespace {

struct RowsAhead : testing::Test {
    const CrewScope crew{std::make_shared<Crew>(2)};
    std::thread::id reader;

    RowSourcePointer numbered(std::uint32_t width, std::uint32_t height,
                              NumberedRows::End end = NumberedRows::End::none, std::uint32_t endRow = 0) {
        return rowsAhead(std::make_unique<NumberedRows>(width, height, end, endRow, reader));
    }
    static bool isReadAhead(std::uint32_t width, std::uint32_t height) {
        std::thread::id reader;
        return rowsAhead(std::make_unique<NumberedRows>(width, height, NumberedRows::End::none, 0, reader))
            ->isReadAhead();
    }
};

TEST_F(RowsAhead, equalTheRowsOfTheirInput) {
    for (const auto& [width, height] :
         {std::pair{1000U, 1000U}, {333U, 2111U}, {300'000U, 3U}, {1U, 400'000U}}) {
        const RowSourcePointer rows = numbered(width, height);
        Bytes row(width);
        for (std::uint32_t y = 0; y < height; ++y) {
            ASSERT_TRUE(rows->readRow(row));
            ASSERT_EQ(row.front(), static_cast<std::uint8_t>(y * 7)) << width << " x " << height;
            ASSERT_EQ(row.back(), row.front());
        }
        EXPECT_TRUE(rows->isReadAhead());
    }
}

TEST_F(RowsAhead, failWhereTheirInputFails) {
    for (const std::uint32_t end : {0U, 1U, 131U, 999U}) {
        const RowSourcePointer rows = numbered(1000, 1000, NumberedRows::End::failure, end);
        Bytes row(1000);
        for (std::uint32_t y = 0; y < end; ++y)
            ASSERT_TRUE(rows->readRow(row));
        const Result<void> failed = rows->readRow(row);
        ASSERT_FALSE(failed);
        EXPECT_EQ(failed.failure().text, "row " + std::to_string(end));
    }
}

TEST_F(RowsAhead, rethrowExceptionsOfTheirInput) {
    const RowSourcePointer rows = numbered(1000, 1000, NumberedRows::End::exception, 500);
    Bytes row(1000);
    for (std::uint32_t y = 0; y < 500; ++y)
        ASSERT_TRUE(rows->readRow(row));
    EXPECT_THROW((void)rows->readRow(row), std::bad_alloc);
}

TEST_F(RowsAhead, canBeDestroyedAtAnyRow) {
    for (const std::uint32_t left : {0U, 1U, 200U, 900U}) {
        const RowSourcePointer rows = numbered(1000, 1000);
        Bytes row(1000);
        for (std::uint32_t y = 0; y < left; ++y)
            ASSERT_TRUE(rows->readRow(row));
    }
}

TEST_F(RowsAhead, areOnlyMadeForLargePicturesInACrewScope) {
    EXPECT_TRUE(isReadAhead(500, 500));
    EXPECT_FALSE(isReadAhead(500, 499));
    const CrewScope none(nullptr);
    EXPECT_FALSE(isReadAhead(500, 500));
}

TEST_F(RowsAhead, areNotMadeInAOneThreadScope) {
    const OneThreadScope alone;
    EXPECT_FALSE(isReadAhead(500, 500));
    EXPECT_EQ(crewOfAllCores(), nullptr);
}

TEST_F(RowsAhead, haveACrewOfAtMostFourThreads) {
    const std::shared_ptr<Crew> all = crewOfAllCores();
    EXPECT_EQ(all == nullptr ? 1 : all->threads(), std::min<std::size_t>(processorCount(), 4));
}

/// The rows of one part of a picture. Every byte of a row is its number in the whole picture times 7. Fails
/// after the last row.
class PartOfRows final : public RowSource {
public:
    PartOfRows(std::uint32_t height, std::uint32_t rowsPerBand, std::uint32_t part, std::uint32_t parts)
        : RowSource({600, height, ColorModel::gray, false, SampleDepth::bits8}), rowsPerBand_(rowsPerBand),
          parts_(parts), y_(part * rowsPerBand) {}

    Result<void> readRow(std::span<std::uint8_t> row) override {
        if (y_ >= format().height)
            return Failure{Reason::malformed, "no row " + std::to_string(y_)};
        std::ranges::fill(row, static_cast<std::uint8_t>(y_ * 7));
        ++y_;
        if (y_ % rowsPerBand_ == 0)
            y_ += (parts_ - 1) * rowsPerBand_;
        return {};
    }

private:
    const std::uint32_t rowsPerBand_, parts_;
    std::uint32_t y_;
};

TEST(RowsInTurns, areTheRowsOfAllPartsInOrder) {
    const CrewScope crew(std::make_shared<Crew>(3));
    for (const std::uint32_t parts : {1U, 2U, 3U})
        for (const std::uint32_t rowsPerBand : {1U, 16U, 700U})
            for (const std::uint32_t height : {1U, 699U, 700U, 1400U, 2111U}) {
                std::vector<RowSourcePointer> shares;
                for (std::uint32_t part = 0; part < parts; ++part)
                    shares.push_back(std::make_unique<PartOfRows>(height, rowsPerBand, part, parts));
                const RowSourcePointer rows = rowsInTurns(std::move(shares), rowsPerBand);
                Bytes row(600);
                for (std::uint32_t y = 0; y < height; ++y) {
                    ASSERT_TRUE(rows->readRow(row)) << parts << " " << rowsPerBand << " " << height;
                    ASSERT_EQ(row.front(), static_cast<std::uint8_t>(y * 7));
                }
            }
}

TEST(RowsInTurns, areNotReadAheadAgain) {
    std::vector<RowSourcePointer> parts;
    parts.push_back(std::make_unique<PartOfRows>(1000, 10, 0, 1));
    RowSourcePointer rows = rowsInTurns(std::move(parts), 10);
    const RowSource* const same = rows.get();
    EXPECT_EQ(rowsAhead(std::move(rows)).get(), same);
}

} // namespace
} // namespace kestrine
