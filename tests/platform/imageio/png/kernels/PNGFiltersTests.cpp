#include "platform/imageio/png/kernels/PNGFilters.h"

#include "platform/imageio/png/kernels/PNGFilters_reference.h"
#include "tests/platform/coregraphics/kernels/EveryTarget.h"

#include <random>
#include <vector>

namespace kestrine::kernels {

namespace {

constexpr std::array<std::size_t, 6> pixelSizes = {1, 2, 3, 4, 6, 8};
constexpr std::array<PNGFilter, pngFilters> allFilters = {PNGFilter::none, PNGFilter::sub, PNGFilter::up,
                                                          PNGFilter::average, PNGFilter::paeth};

/// A row with its margins.
class Row {
public:
    explicit Row(std::size_t count) : bytes_(count + 2 * pngRowMargin), count_(count) {}

    std::uint8_t* data() { return bytes_.data() + pngRowMargin; }
    std::vector<std::uint8_t> content() { return {data(), data() + count_}; }

    /// Random bytes; with a small `spread` they are similar, so that predictions differ only slightly.
    Row& fill(std::mt19937& random, unsigned spread) {
        for (std::size_t i = 0; i < count_; ++i)
            data()[i] = static_cast<std::uint8_t>(random() % spread + (256 - spread) * (i / 16 % 2));
        return *this;
    }

private:
    std::vector<std::uint8_t> bytes_;
    std::size_t count_;
};

/// Calls `check(bytesPerPixel, count, row, above)` for all pixel sizes and many widths.
template <class Check>
void onRows(const Check& check) {
    std::mt19937 random(7);
    for (const std::size_t bytesPerPixel : pixelSizes)
        for (std::size_t width = 1; width <= 70; ++width)
            for (const unsigned spread : {256U, 4U}) {
                const std::size_t count = bytesPerPixel * width;
                Row row(count), above(count);
                check(bytesPerPixel, count, row.fill(random, spread), above.fill(random, spread));
                if (::testing::Test::HasFailure())
                    return;
            }
}

} // namespace

TEST(PNGFilters, everyTargetUnfiltersLikeThePlainLoops) {
    testing::onEveryTarget([] {
        onRows([](std::size_t bytesPerPixel, std::size_t count, Row& filtered, Row& above) {
            for (const PNGFilter filter : allFilters) {
                Row row(count), expected(count);
                unfilterPNGRow(filter, bytesPerPixel, filtered.data(), above.data(), row.data(), count);
                reference::unfilterPNGRow(filter, bytesPerPixel, filtered.data(), above.data(),
                                          expected.data(), count);
                ASSERT_EQ(row.content(), expected.content())
                    << "filter " << int(filter) << ", " << count << " bytes, " << bytesPerPixel << " a pixel";
            }
        });
    });
}

TEST(PNGFilters, everyTargetUnfiltersSeveralRowsLikeThePlainLoops) {
    testing::onEveryTarget([] {
        std::mt19937 random(3);
        onRows([&](std::size_t bytesPerPixel, std::size_t count, Row&, Row& above) {
            for (std::size_t rowCount = 1; rowCount <= paethRowsAtOnce; ++rowCount) {
                std::vector<Row> filtered(rowCount, Row(count)), rows = filtered, expected = filtered;
                PaethRows job{.rowCount = rowCount, .above = above.data()}, expectedJob = job;
                for (std::size_t i = 0; i < rowCount; ++i) {
                    job.filtered[i] = expectedJob.filtered[i] =
                        filtered[i].fill(random, i % 2 ? 256 : 3).data();
                    job.rows[i] = rows[i].data();
                    expectedJob.rows[i] = expected[i].data();
                }
                unfilterPaethRows(bytesPerPixel, job, count);
                reference::unfilterPaethRows(bytesPerPixel, expectedJob, count);
                for (std::size_t i = 0; i < rowCount; ++i)
                    ASSERT_EQ(rows[i].content(), expected[i].content())
                        << "row " << i << " of " << rowCount << ", " << count << " bytes, " << bytesPerPixel
                        << " a pixel";
            }
        });
    });
}

TEST(PNGFilters, everyTargetSumsAndFiltersLikeThePlainLoops) {
    testing::onEveryTarget([] {
        onRows([](std::size_t bytesPerPixel, std::size_t count, Row& row, Row& above) {
            ASSERT_EQ(pngFilterSums(bytesPerPixel, row.data(), above.data(), count),
                      reference::pngFilterSums(bytesPerPixel, row.data(), above.data(), count));
            for (const PNGFilter filter : allFilters) {
                std::vector<std::uint8_t> filtered(count), expected(count);
                filterPNGRow(filter, bytesPerPixel, row.data(), above.data(), filtered.data(), count);
                reference::filterPNGRow(filter, bytesPerPixel, row.data(), above.data(), expected.data(),
                                        count);
                ASSERT_EQ(filtered, expected) << "filter " << int(filter);
            }
        });
    });
}

TEST(PNGFilters, unfilteringUndoesFiltering) {
    onRows([](std::size_t bytesPerPixel, std::size_t count, Row& row, Row& above) {
        for (const PNGFilter filter : allFilters) {
            Row filtered(count), back(count);
            filterPNGRow(filter, bytesPerPixel, row.data(), above.data(), filtered.data(), count);
            unfilterPNGRow(filter, bytesPerPixel, filtered.data(), above.data(), back.data(), count);
            ASSERT_EQ(back.content(), row.content()) << "filter " << int(filter);
        }
    });
}

TEST(PNGFilters, thePaethPredictionIsTheNeighbourNearestToTheEstimate) {
    struct Case {
        int left, above, aboveLeft, expected;
    };
    for (const Case& c : {Case{10, 20, 10, 20},
                          {20, 10, 10, 20},
                          {5, 5, 5, 5},
                          {10, 30, 20, 20},
                          {30, 10, 19, 19},
                          {0, 255, 128, 128},
                          {255, 0, 0, 255},
                          {3, 1, 2, 2}})
        EXPECT_EQ(reference::predictedByte(PNGFilter::paeth, c.left, c.above, c.aboveLeft), c.expected)
            << c.left << ' ' << c.above << ' ' << c.aboveLeft;
}

} // namespace kestrine::kernels
