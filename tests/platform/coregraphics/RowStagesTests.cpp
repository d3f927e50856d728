#include "platform/coregraphics/RowStages.h"

#include "tests/support/Pictures.h"

namespace kestrine {

using testing::makePhoto;
using testing::makePicture;
using testing::samePicture;
using testing::sampleAt;

namespace {

constexpr SampleDepth depths[] = {SampleDepth::bits8, SampleDepth::bits16};

RowSourcePointer rowsOf(const PixelBuffer& picture) {
    return rowsOfPixels(std::make_shared<PixelBuffer>(picture));
}

PixelBuffer read(const RowSourcePointer& rows) { return *readAllRows(*rows); }

unsigned maximum(SampleDepth depth) { return depth == SampleDepth::bits8 ? 255 : 65535; }

/// Pixel x has the colour 51 x and the alpha 255 - 51 x, in 255ths of the range.
PixelBuffer ramp(ColorModel model, SampleDepth depth) {
    const RowFormat format{6, 1, model, true, depth};
    const unsigned fifth = maximum(depth) / 5;
    return makePicture(format, [&](std::uint32_t x, auto, std::size_t c) {
        return c == format.colorChannels() ? maximum(depth) - fifth * x : fifth * x;
    });
}

class FailingRows final : public RowSource {
public:
    FailingRows() : RowSource({3, 3, ColorModel::rgb, true, SampleDepth::bits16}) {}
    Result<void> readRow(std::span<std::uint8_t>) override {
        return Failure{Reason::truncated, "the rows end"};
    }
};

} // namespace

TEST(RowsWithMargins, areOpaqueAndOfOneColour) {
    for (const SampleDepth depth : depths)
        for (const bool alpha : {false, true}) {
            const PixelBuffer photo = makePhoto({4, 3, ColorModel::rgb, alpha, depth});
            const ColorSamples color = samplesOf({255, 128, 0}, photo.format, nullptr);
            const PixelBuffer padded = read(rowsWithMargins(rowsOf(photo), {2, 1, 3, 4}, color));
            ASSERT_EQ(padded.format, (RowFormat{9, 8, ColorModel::rgb, alpha, depth}));
            EXPECT_EQ(sampleAt(padded, 2, 1, 0), sampleAt(photo, 0, 0, 0));
            EXPECT_EQ(sampleAt(padded, 5, 3, 2), sampleAt(photo, 3, 2, 2));
            for (const auto& [x, y] : {std::pair{0U, 0U}, {1U, 2U}, {6U, 2U}, {3U, 4U}, {8U, 7U}}) {
                EXPECT_EQ(sampleAt(padded, x, y, 0), maximum(depth));
                EXPECT_EQ(sampleAt(padded, x, y, 1), maximum(depth) / 255 * 128);
                EXPECT_EQ(sampleAt(padded, x, y, padded.format.channels() - 1), alpha ? maximum(depth) : 0);
            }
        }
}

TEST(RowsOnBackground, transparentPartsTakeItsColour) {
    for (const SampleDepth depth : depths) {
        const PixelBuffer before = ramp(ColorModel::rgb, depth);
        const ColorSamples color = samplesOf({0, 51, 255}, before.format, nullptr);
        const PixelBuffer after = read(rowsOnBackground(rowsOf(before), color));
        EXPECT_FALSE(after.format.hasAlpha);
        EXPECT_EQ(sampleAt(after, 0, 0, 0), 0U);
        EXPECT_EQ(sampleAt(after, 5, 0, 0), 0U) << "the last pixel is clear";
        EXPECT_EQ(sampleAt(after, 5, 0, 1), maximum(depth) / 5);
        EXPECT_EQ(sampleAt(after, 5, 0, 2), maximum(depth));
    }
}

TEST(ColorSamples, areConvertedToTheProfile) {
    const RowFormat format{1, 1, ColorModel::rgb, false, SampleDepth::bits8};
    const ColorProfile adobe = ColorProfile::adobeRGB();
    EXPECT_EQ(samplesOf(white, format, &adobe), (ColorSamples{255, 255, 255}));
    const ColorSamples red = samplesOf({255, 0, 0}, format, &adobe);
    EXPECT_NEAR(red[0], 219, 1); // sRGB's red is less saturated than the other's
    EXPECT_LE(red[1], 3);
    EXPECT_EQ(samplesOf({255, 0, 0}, format, nullptr), (ColorSamples{255, 0, 0}));
}

TEST(FadedRows, alphaIsMultipliedAndRoundedAndColourIsKept) {
    for (const SampleDepth depth : depths)
        for (const ColorModel model : {ColorModel::gray, ColorModel::rgb}) {
            const PixelBuffer before = ramp(model, depth);
            const PixelBuffer faded = read(rowsFaded(rowsOf(before), 0.25F));
            ASSERT_EQ(faded.format, before.format);
            const std::size_t alpha = faded.format.colorChannels();
            for (std::uint32_t x = 0; x < 5; ++x) {
                EXPECT_EQ(sampleAt(faded, x, 0, 0), sampleAt(before, x, 0, 0));
                EXPECT_EQ(sampleAt(faded, x, 0, alpha), (sampleAt(before, x, 0, alpha) + 2) / 4);
            }
        }
}

TEST(FadedRows, rowsWithoutAlphaCountAsOpaque) {
    for (const SampleDepth depth : depths) {
        const PixelBuffer photo = makePhoto({9, 4, ColorModel::rgb, false, depth});
        const PixelBuffer faded = read(rowsFaded(rowsOf(photo), 0.6F));
        const PixelBuffer expected =
            makePicture({9, 4, ColorModel::rgb, true, depth}, [&](auto x, auto y, auto c) {
                return c == 3 ? maximum(depth) / 5 * 3 : sampleAt(photo, x, y, c);
            });
        EXPECT_TRUE(samePicture(faded, expected));
    }
}

TEST(FadedRows, transparentPixelsHaveNoColour) {
    for (const SampleDepth depth : depths) {
        const PixelBuffer faded = read(rowsFaded(rowsOf(ramp(ColorModel::rgb, depth)), 1));
        for (std::size_t c = 0; c < 4; ++c)
            EXPECT_EQ(sampleAt(faded, 5, 0, c), 0U) << "it was transparent before";
        const PixelBuffer gone = read(rowsFaded(rowsOf(makePhoto({4, 3, ColorModel::rgb, false, depth})), 0));
        EXPECT_TRUE(samePicture(gone, makePicture(gone.format, [](auto, auto, auto) { return 0U; })));
    }
}

TEST(RowsOnWhite, colourIsMixedWithWhiteByAlpha) {
    for (const SampleDepth depth : depths) {
        const double last = maximum(depth);
        const PixelBuffer before = ramp(ColorModel::rgb, depth);
        const PixelBuffer flat = read(rowsOnWhite(rowsOf(before)));
        ASSERT_EQ(flat.format, (RowFormat{6, 1, ColorModel::rgb, false, depth}));
        for (std::uint32_t x = 0; x < 6; ++x) {
            const double alpha = sampleAt(before, x, 0, 3) / last;
            EXPECT_NEAR(sampleAt(flat, x, 0, 1), sampleAt(before, x, 0, 1) * alpha + last * (1 - alpha),
                        0.51);
        }
    }
}

TEST(RowsOf8Bits, everySampleIsRounded) {
    const PixelBuffer wide = makePicture({256, 256, ColorModel::gray, false, SampleDepth::bits16},
                                         [](auto x, auto y, auto) { return y * 256 + x; });
    const PixelBuffer narrow = read(rowsOf8Bits(rowsOf(wide)));
    for (std::uint32_t y = 0; y < 256; ++y)
        for (std::uint32_t x = 0; x < 256; ++x)
            ASSERT_NEAR(sampleAt(narrow, x, y, 0), (y * 256 + x) / 257.0, 0.5);
}

TEST(RowStages, returnTheirInputIfThereIsNothingToDo) {
    const PixelBuffer photo = makePhoto({5, 4, ColorModel::rgb, false, SampleDepth::bits8});
    const auto passes = [&](auto stage) {
        RowSourcePointer rows = rowsOf(photo);
        const RowSource* const before = rows.get();
        return stage(std::move(rows)).get() == before;
    };
    EXPECT_TRUE(passes([](RowSourcePointer rows) { return rowsOnWhite(std::move(rows)); }));
    EXPECT_TRUE(passes([](RowSourcePointer rows) { return rowsOf8Bits(std::move(rows)); }));
    EXPECT_TRUE(passes([](RowSourcePointer rows) { return turnedRows(std::move(rows), 0); }));
}

TEST(TurnedRows, movePixelsOfEverySize) {
    constexpr std::pair<std::uint32_t, std::uint32_t> sides[] = {
        {5, 3}, {1, 40}, {40, 1}, {32, 64}, {71, 33}};
    for (const auto& [w, h] : sides)
        for (const SampleDepth depth : depths)
            for (const ColorModel model : {ColorModel::gray, ColorModel::rgb})
                for (const bool alpha : {false, true}) {
                    const PixelBuffer photo = makePhoto({w, h, model, alpha, depth});
                    const auto turned = [&](int quarterTurns, auto place) {
                        const PixelBuffer actual = read(turnedRows(rowsOf(photo), quarterTurns));
                        return samePicture(actual, makePicture(actual.format, place));
                    };
                    EXPECT_TRUE(
                        turned(1, [&](auto x, auto y, auto c) { return sampleAt(photo, y, h - 1 - x, c); }));
                    EXPECT_TRUE(turned(
                        2, [&](auto x, auto y, auto c) { return sampleAt(photo, w - 1 - x, h - 1 - y, c); }));
                    EXPECT_TRUE(
                        turned(3, [&](auto x, auto y, auto c) { return sampleAt(photo, w - 1 - y, x, c); }));
                }
}

TEST(RowStages, returnTheFailureOfTheirInput) {
    const auto failing = [] { return std::make_unique<FailingRows>(); };
    for (const RowSourcePointer& rows : {rowsOnWhite(failing()), rowsFaded(failing(), 0.5F),
                                         rowsOf8Bits(failing()), turnedRows(failing(), 1)})
        EXPECT_EQ(readAllRows(*rows).failure().reason, Reason::truncated);
}

} // namespace kestrine
