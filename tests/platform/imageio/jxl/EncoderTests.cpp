#include "tests/platform/imageio/Decoded.h"
#include "tests/support/Pictures.h"

namespace kestrine::testing {

TEST(JXLEncoder, aLosslessPictureOfAnyLayoutIsDecodedUnchanged) {
    for (const RowFormat& format : allLayouts(31, 20)) {
        const PixelBuffer photo = makePhoto(format);
        const Bytes file = encodeSound(jxl::encode, photo, {.isLossless = true});
        EXPECT_TRUE(samePicture(decodeSound(jxl::codec, file).pixels, photo));
    }
}

TEST(JXLEncoder, aHigherQualityGivesALargerFileThatIsNearer) {
    const PixelBuffer photo = makePhoto({200, 150});
    std::size_t before = 0;
    for (const double quality : {0.1, 0.5, 0.9, 1.0}) {
        const Bytes file = encodeSound(jxl::encode, photo, {.quality = quality});
        EXPECT_GT(file.size(), before);
        before = file.size();
    }
    const Bytes best = encodeSound(jxl::encode, photo, {.quality = 1});
    EXPECT_TRUE(samePicture(decodeSound(jxl::codec, best).pixels, photo, 12));
}

TEST(JXLEncoder, aProfileIsKept) {
    const ColorProfile profile = ColorProfile::adobeRGB();
    const Bytes file =
        encodeSound(jxl::encode, makePhoto({31, 20}), {.isLossless = true, .profile = &profile});
    EXPECT_EQ(decodeSound(jxl::codec, file).frame().profile, profile);
}

TEST(JXLEncoder, theOrientationOfTheExifDataGoesIntoTheCodestream) {
    const Bytes exif = {'M', 'M', 0, 42, 0, 0, 0, 8, 0, 1, 1, 0x12, 0, 3, 0, 0, 0, 1, 0, 6, 0, 0, 0, 0, 0, 0};
    const Decoded decoded = decodeSound(
        jxl::codec, encodeSound(jxl::encode, makePhoto({31, 20}), {.isLossless = true, .exif = exif}));
    EXPECT_EQ(decoded.pixels.format.width, 20u);
    ASSERT_EQ(decoded.exif.size(), exif.size());
    EXPECT_EQ(decoded.exif[19], 1);
}

} // namespace kestrine::testing
