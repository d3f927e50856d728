#include "platform/coregraphics/RowsAhead.h"
#include "platform/imageio/avif/Library.h"
#include "tests/platform/imageio/Decoded.h"
#include "tests/support/ExifBuilder.h"
#include "tests/support/Pictures.h"

namespace kestrine::testing {

namespace {

Bytes exifWithOrientation(std::uint16_t orientation) {
    return exifBlock({.ifd0 = {exifShorts(0x0112, {orientation})}});
}

} // namespace

TEST(AVIFEncoder, aLosslessPictureOf8BitsIsDecodedUnchanged) {
    for (const RowFormat& format : allLayouts(31, 20))
        if (format.depth == SampleDepth::bits8) {
            const PixelBuffer photo = makePhoto(format);
            const Bytes file = encodeSound(avif::encode, photo, {.isLossless = true});
            EXPECT_TRUE(samePicture(decodeSound(heif::avifCodec, file).pixels, photo));
        }
}

TEST(AVIFEncoder, of16BitsThe12HighestAreKept) {
    for (const RowFormat& format : allLayouts(31, 20))
        if (format.depth == SampleDepth::bits16) {
            const PixelBuffer photo = makePhoto(format);
            const Bytes file = encodeSound(avif::encode, photo, {.isLossless = true});
            EXPECT_TRUE(samePicture(decodeSound(heif::avifCodec, file).pixels, photo, 9));
        }
}

TEST(AVIFEncoder, aHigherQualityGivesALargerFileThatIsNearer) {
    const PixelBuffer photo = makePhoto({200, 150});
    std::size_t before = 0;
    for (const double quality : {0.1, 0.5, 0.9, 1.0}) {
        const Bytes file = encodeSound(avif::encode, photo, {.quality = quality});
        EXPECT_GT(file.size(), before);
        before = file.size();
    }
    const Bytes best = encodeSound(avif::encode, photo, {.quality = 1});
    EXPECT_TRUE(samePicture(decodeSound(heif::avifCodec, best).pixels, photo, 4));
}

TEST(AVIFEncoder, alphaIsExactAtEveryQuality) {
    const PixelBuffer photo = makePhoto({.width = 31, .height = 20, .hasAlpha = true});
    const PixelBuffer decoded =
        decodeSound(heif::avifCodec, encodeSound(avif::encode, photo, {.quality = 0.2})).pixels;
    for (std::size_t i = 3; i < photo.bytes.size(); i += 4)
        ASSERT_EQ(decoded.bytes[i], photo.bytes[i]);
}

TEST(AVIFEncoder, theNumberOfThreadsDoesNotChangeTheBytes) {
    const PixelBuffer photo = makePhoto({700, 500});
    const Bytes file = encodeSound(avif::encode, photo, {.quality = 0.6, .effort = Effort::fast});
    const OneThreadScope oneThread;
    EXPECT_EQ(encodeSound(avif::encode, photo, {.quality = 0.6, .effort = Effort::fast}), file);
}

TEST(AVIFEncoder, aProfileIsKept) {
    const ColorProfile profile = ColorProfile::adobeRGB();
    const Bytes file = encodeSound(avif::encode, makePhoto({31, 20}), {.quality = 0.8, .profile = &profile});
    EXPECT_EQ(decodeSound(heif::avifCodec, file).frame().profile, profile);
}

TEST(AVIFEncoder, theOrientationOfTheExifDataBecomesATurnOfTheContainer) {
    for (std::uint16_t orientation = 1; orientation <= 8; ++orientation) {
        const Bytes exif = exifWithOrientation(orientation);
        const Bytes file = encodeSound(avif::encode, makePhoto({31, 20}), {.isLossless = true, .exif = exif});
        const Decoded decoded = decodeSound(heif::avifCodec, file);
        EXPECT_EQ(decoded.frame().format.width, orientation < 5 ? 31u : 20u);
        EXPECT_EQ(decoded.exif, exifWithOrientation(1));
    }
}

TEST(AVIFEncoder, aMissingLibraryIsReportedWithItsPackage) {
    EXPECT_EQ(avif::loadFunctions({"libabsent.so"}).failure().text,
              "writing AVIF pictures needs libavif (package libavif15)");
}

} // namespace kestrine::testing
