// Pixels that are lost are reported.
#include "tests/platform/imageio/Decoded.h"
#include "tests/platform/imageio/png/PNGFile.h"
#include "tests/support/Pictures.h"

namespace kestrine::testing {

TEST(PNGDamage, aFileCutOffAnywhereIsRefusedOrItsDamageIsReported) {
    const Bytes file = indexedPNG().make();
    for (std::size_t length = 0; length < file.size(); ++length)
        EXPECT_TRUE(isRefusedOrDamaged(
            png::codec, Bytes(file.begin(), file.begin() + static_cast<std::ptrdiff_t>(length))))
            << length << " of " << file.size() << " bytes";
}

TEST(PNGDamage, rowsAfterTheEndOfTheFileAreClear) {
    for (const bool hasAlpha : {false, true}) {
        const PixelBuffer picture = makePhoto({.width = 50, .height = 60, .hasAlpha = hasAlpha});
        Bytes file = encodeSound(png::encode, picture);
        file.resize(file.size() / 2);
        const auto decoder = *png::codec.open(readerOfBytes(file));
        const PixelBuffer decoded = *readAllRows(**decoder->rows(0, 0));
        std::uint32_t y = 0;
        while (y < 60 && std::ranges::equal(decoded.row(y), picture.row(y)))
            ++y;
        EXPECT_GT(y, 10u);
        for (; y < 60; ++y)
            EXPECT_EQ(std::ranges::count(decoded.row(y), 0), std::ptrdiff_t(decoded.format.bytesPerRow()));
        EXPECT_EQ(decoder->damage()->reason, Reason::truncated);
    }
}

TEST(PNGDamage, damagedPixelsAreRefusedOrReported) {
    for (const bool interlaced : {false, true}) {
        PNGFile recipe = patternPNG(PNG_COLOR_TYPE_RGB, 8);
        recipe.interlaced = interlaced;
        const Bytes file = recipe.make();
        for (std::size_t position = 41; position < file.size() - 12; ++position) {
            Bytes damaged = file;
            damaged[position] ^= 0x10;
            EXPECT_TRUE(isRefusedOrDamaged(png::codec, damaged)) << "byte " << position;
        }
    }
}

TEST(PNGDamage, transparencyInADamagedChunkIsLostAndReported) {
    PNGFile recipe = indexedPNG();
    recipe.before = [](auto png, auto info) {
        const png_byte alpha = 0;
        png_set_PLTE(png, info, pngPalette, 4);
        png_set_tRNS(png, info, &alpha, 1, nullptr);
    };
    Bytes file = recipe.make();
    const std::string_view name = "tRNS";
    const auto chunk = std::search(file.begin(), file.end(), name.begin(), name.end());
    for (const bool isDamaged : {false, true}) {
        *(chunk + 4) ^= isDamaged;
        const auto decoder = *png::codec.open(readerOfBytes(file));
        EXPECT_TRUE(decoder->rows(0, 0).ok());
        EXPECT_EQ(decoder->damage().has_value(), isDamaged);
    }
}

} // namespace kestrine::testing
