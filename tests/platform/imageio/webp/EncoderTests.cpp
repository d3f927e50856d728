#include "platform/imageio/LocalSource.h"
#include "platform/imageio/OutputFormats.h"
#include "platform/imageio/Render.h"
#include "tests/platform/imageio/Decoded.h"
#include "tests/support/Pictures.h"

namespace kestrine::testing {

namespace {

const Bytes exifBlock = {'M', 'M', 0, 42, 0, 0, 0, 8, 0, 1, 1, 0x12, 0,
                         3,   0,   0, 0,  1, 0, 6, 0, 0, 0, 0, 0,    0};

PixelBuffer opaquePhoto(bool hasAlpha) { return makePhoto({31, 20, ColorModel::rgb, hasAlpha}); }

} // namespace

TEST(WebPEncoder, aLosslessPictureIsDecodedUnchanged) {
    for (const bool hasAlpha : {false, true}) {
        const Bytes file = encodeSound(webp::encode, opaquePhoto(hasAlpha), {.isLossless = true});
        EXPECT_TRUE(samePicture(decodeSound(webp::codec, file).pixels, opaquePhoto(hasAlpha)));
    }
}

TEST(WebPEncoder, aHigherQualityGivesALargerFile) {
    std::size_t before = 0;
    for (const double quality : {0.1, 0.5, 0.9, 1.0}) {
        const std::size_t size =
            encodeSound(webp::encode, makePhoto({200, 150}), {.quality = quality}).size();
        EXPECT_GT(size, before);
        before = size;
    }
}

TEST(WebPEncoder, aProfileAndExifDataAreKeptBesideEveryKindOfPicture) {
    const ColorProfile profile = ColorProfile::adobeRGB();
    for (const bool hasAlpha : {false, true})
        for (const bool isLossless : {false, true}) {
            const EncodingOptions options{
                .quality = 0.9, .isLossless = isLossless, .profile = &profile, .exif = exifBlock};
            const Decoded decoded =
                decodeSound(webp::codec, encodeSound(webp::encode, opaquePhoto(hasAlpha), options));
            EXPECT_EQ(decoded.frame().profile, profile);
            EXPECT_EQ(decoded.exif, exifBlock);
            EXPECT_EQ(decoded.pixels.format.hasAlpha, hasAlpha);
        }
}

TEST(WebPEncoder, aGreyPictureBecomesSRGBWithItsTones) {
    const PixelBuffer gray = makePhoto({31, 20, ColorModel::gray});
    const auto source = *LocalSource::open(readerOfBytes(encodeSound(png::encode, gray)));
    const Bytes file = *render({source, 0, {}}, {FileType::webp, {.isLossless = true}});
    const PixelBuffer decoded = decodeSound(webp::codec, file).pixels;
    EXPECT_EQ(decoded.format.model, ColorModel::rgb);
    EXPECT_EQ(sampleAt(decoded, 5, 5, 0), sampleAt(gray, 5, 5, 0));
    EXPECT_EQ(sampleAt(decoded, 5, 5, 2), sampleAt(gray, 5, 5, 0));
}

} // namespace kestrine::testing
