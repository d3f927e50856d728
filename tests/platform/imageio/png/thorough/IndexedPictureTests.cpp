#include "platform/imageio/png/thorough/IndexedPicture.h"

#include "tests/platform/imageio/Decoded.h"
#include "tests/support/Pictures.h"

namespace kestrine::testing {

namespace {

/// A picture in which pixel i has the colour i % colors.
PixelBuffer striped(unsigned colors, RowFormat format) {
    return makePicture(format, [&](unsigned x, unsigned y, std::size_t channel) {
        const unsigned color = (y * format.width + x) % colors;
        return channel == 3 ? 255 - color % 2 : channel == 1 ? color / 256 : color * (channel + 1) % 256;
    });
}

std::variant<png::IndexedPicture, RowSourcePointer> triedWith(RowSource& rows, std::size_t maxColors = 256) {
    return *png::indexedIfPossible(rows, maxColors);
}

} // namespace

TEST(IndexedPicture, hasAPaletteOfAtMost256Colours) {
    for (const unsigned colors : {1u, 2u, 3u, 16u, 255u, 256u, 257u}) {
        const PixelBuffer picture = striped(colors, {.width = 40, .height = 30});
        const RowSourcePointer rows = rowsOfPixels(std::make_shared<PixelBuffer>(picture));
        const auto tried = triedWith(*rows);
        const auto* indexed = std::get_if<png::IndexedPicture>(&tried);
        ASSERT_EQ(indexed != nullptr, colors <= 256) << colors;
        EXPECT_TRUE(indexed == nullptr || indexed->palette.size() == colors);
    }
}

TEST(IndexedPicture, otherPicturesComeBackUnchanged) {
    for (const std::size_t limit : {1, 20, 256}) {
        const PixelBuffer picture = makePhoto({.width = 61, .height = 47});
        const RowSourcePointer rows = rowsOfPixels(std::make_shared<PixelBuffer>(picture));
        const auto tried = triedWith(*rows, limit);
        ASSERT_TRUE(std::holds_alternative<RowSourcePointer>(tried));
        EXPECT_TRUE(samePicture(*readAllRows(*std::get<RowSourcePointer>(tried)), picture));
    }
}

TEST(IndexedPicture, needsAsManyBitsAsItHasColours) {
    for (const auto& [colors, bits] :
         {std::pair{1u, 1}, {2u, 1}, {3u, 2}, {4u, 2}, {5u, 4}, {16u, 4}, {17u, 8}}) {
        const RowSourcePointer rows =
            rowsOfPixels(std::make_shared<PixelBuffer>(striped(colors, {.width = 40, .height = 30})));
        const auto tried = triedWith(*rows);
        EXPECT_EQ(std::get<png::IndexedPicture>(tried).bits(), bits) << colors;
    }
}

TEST(IndexedPicture, isDecodedUnchanged) {
    for (const bool hasAlpha : {false, true})
        for (const unsigned colors : {2u, 4u, 13u, 16u, 200u})
            for (const std::uint32_t width : {1u, 7u, 41u}) {
                const PixelBuffer picture =
                    striped(colors, {.width = width, .height = 401, .hasAlpha = hasAlpha});
                const Bytes file = encodeSound(png::encode, picture, {.effort = Effort::max});
                EXPECT_TRUE(samePicture(decodeSound(png::codec, file).pixels, picture)) << colors;
            }
}

TEST(IndexedPicture, greyPicturesHaveAPaletteOnlyIfItSavesBits) {
    constexpr std::size_t colorTypeInFile = 25;
    constexpr std::uint8_t gray = 0, palette = 3;
    for (const auto& [colors, type] : {std::pair{2u, palette}, {16u, palette}, {17u, gray}}) {
        const PixelBuffer picture = striped(colors, {.width = 40, .height = 30, .model = ColorModel::gray});
        EXPECT_EQ(encodeSound(png::encode, picture, {.effort = Effort::max})[colorTypeInFile], type);
    }
}

} // namespace kestrine::testing
