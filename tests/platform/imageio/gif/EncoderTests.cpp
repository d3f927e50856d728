#include "tests/platform/imageio/Decoded.h"
#include "tests/platform/imageio/gif/GIFFile.h"
#include "tests/support/Pictures.h"

#include <algorithm>
#include <cmath>

namespace kestrine::testing {

namespace {

StoredGIF encoded(const PixelBuffer& picture, const EncodingOptions& options = {}) {
    const Bytes file = encodeSound(gif::encode, picture, options);
    StoredGIF stored = readStoredGIF(file);
    EXPECT_EQ(stored.pictures, 1);
    EXPECT_EQ(stored.version, "GIF89a");
    return stored;
}

/// A picture of `count` different colours, each several times.
PixelBuffer pictureOfColors(unsigned count) {
    return makePicture({32, 32}, [count](std::uint32_t x, std::uint32_t y, std::size_t c) {
        const unsigned color = (32 * y + x) % count;
        return c == 0 ? color & 255 : c == 1 ? 3 * color >> 2 & 255 : color >> 8;
    });
}

/// One row of one colour with every alpha from 0 to 255.
PixelBuffer alphaRamp() {
    return makePicture({256, 1, ColorModel::gray, true},
                       [](std::uint32_t x, std::uint32_t, std::size_t c) { return c == 0 ? 90 : x; });
}

Bytes grayTable(unsigned count) {
    Bytes table;
    for (unsigned i = 0; i < count; ++i)
        table.insert(table.end(), 3, static_cast<std::uint8_t>(i));
    return table;
}

EncodingOptions withTable(const Bytes& table) {
    EncodingOptions options;
    options.colorTable = table;
    return options;
}

EncodingOptions withDitheredTransparency() {
    EncodingOptions options;
    options.ditherTransparency = true;
    return options;
}

/// Peak signal-to-noise ratio in decibels.
double likeness(const PixelBuffer& a, const PixelBuffer& b) {
    double sum = 0;
    for (std::size_t i = 0; i < a.bytes.size(); ++i)
        sum += (a.bytes[i] - b.bytes[i]) * (a.bytes[i] - b.bytes[i]);
    return 10 * std::log10(255 * 255 * static_cast<double>(a.bytes.size()) / sum);
}

/// The means of square tiles, which dithering must not change.
PixelBuffer tiles(const PixelBuffer& picture, std::uint32_t side) {
    return makePicture({picture.format.width / side, picture.format.height / side},
                       [&](std::uint32_t tileX, std::uint32_t tileY, std::size_t c) {
                           unsigned sum = 0;
                           for (std::uint32_t i = 0; i < side * side; ++i)
                               sum += sampleAt(picture, tileX * side + i % side, tileY * side + i / side, c);
                           return (sum + side * side / 2) / (side * side);
                       });
}

} // namespace

TEST(GIFEncoder, aPictureOfFewColorsIsDecodedUnchanged) {
    for (const unsigned count : {1u, 2u, 3u, 4u, 5u, 17u, 128u, 129u, 255u, 256u}) {
        const PixelBuffer picture = pictureOfColors(count);
        const Bytes file = encodeSound(gif::encode, picture);
        EXPECT_TRUE(samePicture(decodeSound(gif::codec, file).pixels, picture)) << count;
        EXPECT_GE(readStoredGIF(file).colors.size(), count);
        EXPECT_LT(readStoredGIF(file).colors.size(), std::max(3u, 2 * count));
    }
}

TEST(GIFEncoder, aGrayRampIsDecodedUnchangedAsRGB) {
    const auto gray = [](std::uint32_t x, std::uint32_t, std::size_t) { return x; };
    const Bytes file = encodeSound(gif::encode, makePicture({256, 2, ColorModel::gray}, gray));
    EXPECT_TRUE(samePicture(decodeSound(gif::codec, file).pixels, makePicture({256, 2}, gray)));
}

TEST(GIFEncoder, everySizeIsEncoded) {
    for (const auto& [width, height] :
         {std::pair{1u, 1u}, {1u, 300u}, {300u, 1u}, {257u, 3u}, {65535u, 1u}, {1u, 65535u}}) {
        const StoredGIF stored = encoded(makePhoto({width, height}));
        EXPECT_EQ(stored.width, static_cast<int>(width));
        EXPECT_EQ(stored.height, static_cast<int>(height));
    }
}

TEST(GIFEncoder, anOpaquePictureHasNoTransparentIndex) {
    EXPECT_FALSE(encoded(makePhoto({8, 8})).transparent.has_value());
    const auto opaque = [](std::uint32_t x, std::uint32_t y, std::size_t c) {
        return c == 3 ? 255 : 9 * x + y;
    };
    EXPECT_FALSE(encoded(makePicture({8, 8, ColorModel::rgb, true}, opaque)).transparent.has_value());
}

TEST(GIFEncoder, pixelsBelowHalfAlphaAreTransparent) {
    const StoredGIF stored = encoded(alphaRamp());
    ASSERT_TRUE(stored.transparent.has_value());
    for (std::size_t alpha = 0; alpha < 256; ++alpha)
        EXPECT_EQ(stored.isShown(alpha), alpha >= 128) << alpha;
    EXPECT_EQ(stored.colorAt(255).Red, 90);
}

TEST(GIFEncoder, ditheredTransparencyShowsPixelsInProportionToAlpha) {
    const PixelBuffer quarter = makePicture({64, 64, ColorModel::rgb, true},
                                            [](auto, auto, std::size_t c) { return c == 3 ? 64 : 200; });
    const StoredGIF stored = encoded(quarter, withDitheredTransparency());
    std::size_t shown = 0;
    for (std::size_t i = 0; i < stored.indices.size(); ++i)
        shown += stored.isShown(i);
    EXPECT_NEAR(static_cast<double>(shown), 64 * 64 / 4, 64);
}

TEST(GIFEncoder, ditheringKeepsFullyTransparentAndOpaquePixels) {
    const StoredGIF stored = encoded(alphaRamp(), withDitheredTransparency());
    EXPECT_FALSE(stored.isShown(0));
    EXPECT_TRUE(stored.isShown(255));
    std::array<int, 4> shownOfQuarter{};
    for (std::size_t alpha = 0; alpha < 256; ++alpha)
        shownOfQuarter[alpha / 64] += stored.isShown(alpha);
    EXPECT_GT(shownOfQuarter[1], 0) << "below half";
    EXPECT_LT(shownOfQuarter[2], 64) << "above half";
}

TEST(GIFEncoder, aFullyTransparentPictureIsEncoded) {
    const StoredGIF stored = encoded(PixelBuffer({5, 4, ColorModel::rgb, true}));
    for (std::size_t i = 0; i < stored.indices.size(); ++i)
        EXPECT_FALSE(stored.isShown(i));
}

TEST(GIFEncoder, colorsOfTransparentPixelsAreNotInTheColorTable) {
    const auto sample = [](std::uint32_t x, std::uint32_t y, std::size_t c) {
        const bool isHidden = y > 0;
        return c == 3     ? (isHidden ? 0u : 255u)
               : isHidden ? (7 * x + 31 * y + 90 * static_cast<unsigned>(c)) & 255
                          : 2 * x;
    };
    const Bytes file = encodeSound(gif::encode, makePicture({100, 50, ColorModel::rgb, true}, sample));
    EXPECT_EQ(readStoredGIF(file).colors.size(), 128u);
    const PixelBuffer pixels = decodeSound(gif::codec, file).pixels;
    for (std::uint32_t x = 0; x < 100; ++x)
        EXPECT_EQ(sampleAt(pixels, x, 0, 1), 2 * x);
}

TEST(GIFEncoder, aGivenColorTableIsWrittenExactly) {
    const Bytes table = grayTable(6);
    const StoredGIF stored = encoded(makePhoto({40, 30}), withTable(table));
    ASSERT_EQ(stored.colors.size(), 8u);
    for (std::uint8_t i = 0; i < 6; ++i)
        EXPECT_EQ(stored.colors[i].Green, i);
    EXPECT_LT(*std::ranges::max_element(stored.indices), 6);
}

TEST(GIFEncoder, aPictureOfTheGivenColorsIsDecodedUnchanged) {
    Bytes table;
    for (unsigned color = 0; color < 256; ++color) // many colours in one cell of the colour cube
        table.insert(table.end(),
                     {static_cast<std::uint8_t>(color & 7), static_cast<std::uint8_t>(color >> 3 & 7),
                      static_cast<std::uint8_t>(color >> 6)});
    const PixelBuffer picture = makePicture({16, 16}, [&](std::uint32_t x, std::uint32_t y, std::size_t c) {
        return table[3 * (255 - 16 * y - x) + c];
    });
    const StoredGIF stored = encoded(picture, withTable(table));
    for (std::size_t i = 0; i < 256; ++i)
        EXPECT_EQ(stored.indices[i], 255 - i);
}

TEST(GIFEncoder, transparencyIsAddedToAGivenTable) {
    const Bytes small = grayTable(3), full = grayTable(256);
    EXPECT_EQ(encoded(alphaRamp(), withTable(small)).transparent, 3);
    const StoredGIF stored = encoded(alphaRamp(), withTable(full));
    EXPECT_EQ(stored.colors.size(), 256u);
    EXPECT_EQ(stored.colorAt(255).Red, 90);
    EXPECT_TRUE(stored.isShown(255));
}

TEST(GIFEncoder, anIncompleteColorTableIsIgnored) {
    const PixelBuffer picture = pictureOfColors(20);
    const Bytes table(7);
    EXPECT_EQ(encodeSound(gif::encode, picture, withTable(table)), encodeSound(gif::encode, picture));
}

TEST(GIFEncoder, aPhotoIsSimilarToItsSource) {
    const PixelBuffer photo = makePhoto({480, 320});
    const PixelBuffer decoded = decodeSound(gif::codec, encodeSound(gif::encode, photo)).pixels;
    EXPECT_GT(likeness(decoded, photo), 30);
    EXPECT_GT(likeness(tiles(decoded, 8), tiles(photo, 8)), 50);
}

TEST(GIFEncoder, theSamePictureGivesTheSameBytes) {
    const PixelBuffer photo = makePhoto({100, 70, ColorModel::rgb, true});
    EXPECT_EQ(encodeSound(gif::encode, photo, withDitheredTransparency()),
              encodeSound(gif::encode, photo, withDitheredTransparency()));
}

TEST(GIFEncoder, samplesOf16BitsAreRefused) {
    const RowFormat format = {2, 2, ColorModel::rgb, false, SampleDepth::bits16};
    const auto rows = rowsOfPixels(std::make_shared<PixelBuffer>(format));
    EXPECT_EQ(encoded(gif::encode, *rows, {}).failure().reason, Reason::unsupported);
}

TEST(GIFEncoder, aFailureOfTheRowsIsReturned) {
    struct BrokenRows final : RowSource {
        BrokenRows() : RowSource({4, 4}) {}
        Result<void> readRow(std::span<std::uint8_t>) override {
            return Failure{Reason::truncated, "broken on purpose"};
        }
    } rows;
    EXPECT_EQ(encoded(gif::encode, rows, {}).failure().text, "broken on purpose");
}

} // namespace kestrine::testing
