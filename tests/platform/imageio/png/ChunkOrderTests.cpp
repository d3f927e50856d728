// Transparency counts also before the palette.
#include "tests/platform/imageio/Decoded.h"
#include "tests/platform/imageio/png/PNGFile.h"
#include "tests/platform/imageio/png/PNGRecipe.h"
#include "tests/support/Pictures.h"

namespace kestrine::testing {

namespace {

/// A file of indices with this tRNS chunk before its palette.
Bytes withEarlyTransparency(ByteView alpha) { return withChunk(indexedPNG().make(), "tRNS", alpha); }

} // namespace

TEST(PNGChunkOrder, transparencyBeforeThePaletteCounts) {
    const Decoded decoded = decodeSound(png::codec, withEarlyTransparency(Bytes{0, 128}));
    ASSERT_TRUE(decoded.pixels.format.hasAlpha);
    EXPECT_EQ(sampleAt(decoded.pixels, 0, 0, 3), 0U);
    EXPECT_EQ(sampleAt(decoded.pixels, 1, 0, 3), 128U);
    EXPECT_EQ(sampleAt(decoded.pixels, 2, 0, 3), 255U);
}

TEST(PNGChunkOrder, transparencyBeforeThePaletteThatIsDamagedIsLostAndReported) {
    Bytes wrongChecksum = withEarlyTransparency(Bytes{0, 128});
    wrongChecksum[afterHeader + 8] ^= 1;
    for (const Bytes& file : {wrongChecksum, withEarlyTransparency(Bytes(257)), withEarlyTransparency({})}) {
        const auto decoder = *png::codec.open(readerOfBytes(file));
        EXPECT_FALSE(decoder->frames().front().format.hasAlpha);
        EXPECT_TRUE(decoder->rows(0, 0).ok());
        EXPECT_TRUE(decoder->damage().has_value());
    }
}

} // namespace kestrine::testing
