#include "platform/coregraphics/PixelBuffer.h"

#include <gtest/gtest.h>

namespace kestrine {

namespace {

/// Rows of zeros.
class ZeroRows final : public RowSource {
public:
    explicit ZeroRows(const RowFormat& format) : RowSource(format) {}
    Result<void> readRow(std::span<std::uint8_t>) override { return {}; }
};

} // namespace

TEST(RowFormat, picturesHaveUpTo2To30PixelsAndAMillionPixelsPerSide) {
    EXPECT_TRUE((RowFormat{32'768, 32'768}).isWithinLimits());
    EXPECT_FALSE((RowFormat{32'768, 32'769}).isWithinLimits());
    EXPECT_TRUE((RowFormat{1'000'000, 1}).isWithinLimits());
    EXPECT_FALSE((RowFormat{1'000'001, 1}).isWithinLimits());
    EXPECT_FALSE((RowFormat{1, 1'000'001}).isWithinLimits());
    EXPECT_FALSE((RowFormat{0, 1}).isWithinLimits());
}

TEST(RowFormat, theLimitOfPixelsCanBeSet) {
    setMaximumPixels(99);
    EXPECT_FALSE((RowFormat{10, 10}).isWithinLimits());
    setMaximumPixels(std::uint64_t{1} << 31);
    EXPECT_TRUE((RowFormat{65'536, 32'768}).isWithinLimits());
    setMaximumPixels(defaultMaximumPixels);
}

TEST(PixelBuffer, aPictureOver2GiBIsNotReadIntoMemory) {
    ZeroRows rows({32'768, 16'385, ColorModel::rgb, true});
    const Result<PixelBuffer> pixels = readAllRows(rows);
    ASSERT_FALSE(pixels.ok());
    EXPECT_EQ(pixels.failure().reason, Reason::tooLarge);
}

TEST(PixelBuffer, rowsOfPixelsCanBeReadIntoAnEqualBuffer) {
    const auto pixels = std::make_shared<PixelBuffer>(RowFormat{3, 2, ColorModel::gray});
    pixels->bytes = {1, 2, 3, 4, 5, 6};
    const RowSourcePointer rows = rowsOfPixels(pixels);
    EXPECT_EQ(readAllRows(*rows)->bytes, pixels->bytes);
}

} // namespace kestrine
