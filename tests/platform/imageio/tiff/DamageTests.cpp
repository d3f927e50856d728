// TIFF files that libtiff decodes although they are damaged.
#include "platform/imageio/LocalSource.h"
#include "tests/platform/imageio/tiff/TIFFRecipe.h"

#include <gtest/gtest.h>

namespace kestrine::testing {

namespace {

TIFFRecipe faxPage(std::uint16_t compression) {
    return {.width = 200,
            .height = 100,
            .bits = 1,
            .samples = 1,
            .photometric = PHOTOMETRIC_MINISWHITE,
            .compression = compression,
            .rowsPerStrip = 100,
            .sample = [](auto x, auto y, auto) { return (x / (3 + y % 5) + y) % 2; }};
}

TIFFRecipe jpegPage() {
    return {.width = 200,
            .height = 100,
            .photometric = PHOTOMETRIC_YCBCR,
            .compression = COMPRESSION_JPEG,
            .rowsPerStrip = 100,
            .tags = [](TIFF* tiff) { TIFFSetField(tiff, TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB); }};
}

std::shared_ptr<Source> decodedSource(const Bytes& file) {
    const auto source = *LocalSource::open(readerOfBytes(file));
    EXPECT_TRUE(readAllRows(**source->rows(0, 0)).ok());
    return source;
}

/// `file` with `bytes` in the middle of its pixels, which are stored first.
Bytes damaged(Bytes file, const Bytes& bytes) {
    std::copy(bytes.begin(), bytes.end(), file.begin() + static_cast<std::ptrdiff_t>(file.size() / 3));
    return file;
}

} // namespace

TEST(TIFFDamage, validPagesHaveNone) {
    for (const TIFFRecipe& page : {faxPage(COMPRESSION_CCITTRLE), faxPage(COMPRESSION_CCITTFAX4), jpegPage()})
        EXPECT_FALSE(decodedSource(makeTIFF(page))->damage()) << page.compression;
}

TEST(TIFFDamage, faxLinesThatLibtiffRepairsAreReported) {
    for (const std::uint16_t compression :
         std::vector<std::uint16_t>{COMPRESSION_CCITTRLE, COMPRESSION_CCITTFAX4}) {
        const auto damage = decodedSource(damaged(makeTIFF(faxPage(compression)), {0, 0x18, 0x18}))->damage();
        ASSERT_TRUE(damage) << compression;
        EXPECT_EQ(damage->reason, Reason::malformed);
        EXPECT_TRUE(damage->text.starts_with("the TIFF picture is damaged: ")) << damage->text;
    }
}

TEST(TIFFDamage, aJPEGStripThatEndsEarlyIsReported) {
    EXPECT_TRUE(decodedSource(damaged(makeTIFF(jpegPage()), {0xFF, 0xD9}))->damage());
}

} // namespace kestrine::testing
