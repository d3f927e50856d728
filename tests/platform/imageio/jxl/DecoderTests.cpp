#include "platform/imageio/jxl/Library.h"
#include "tests/platform/imageio/Decoded.h"
#include "tests/platform/imageio/jxl/JXLRecipe.h"
#include "tests/support/Pictures.h"

namespace kestrine::testing {

namespace {

constexpr RowFormat rgb{31, 20};

Bytes makeJXL(const PixelBuffer& pixels) {
    JXLRecipe recipe{.pixels = pixels};
    recipe.color = JXLRecipe::sRGB(pixels.format.model == ColorModel::gray);
    return recipe.make();
}

/// (x, y) of the stored pixel that an orientation shows at (x, y).
std::pair<std::uint32_t, std::uint32_t> storedPosition(int orientation, std::uint32_t x, std::uint32_t y,
                                                       const RowFormat& stored) {
    const std::uint32_t right = stored.width - 1, bottom = stored.height - 1;
    switch (orientation) {
    case 2:
        return {right - x, y};
    case 3:
        return {right - x, bottom - y};
    case 4:
        return {x, bottom - y};
    case 5:
        return {y, x};
    case 6:
        return {y, bottom - x};
    case 7:
        return {right - y, bottom - x};
    case 8:
        return {right - y, x};
    default:
        return {x, y};
    }
}

PixelBuffer shown(const PixelBuffer& stored, int orientation) {
    RowFormat format = stored.format;
    if (orientation > 4)
        std::swap(format.width, format.height);
    return makePicture(format, [&](std::uint32_t x, std::uint32_t y, std::size_t channel) {
        const auto [storedX, storedY] = storedPosition(orientation, x, y, stored.format);
        return sampleAt(stored, storedX, storedY, channel);
    });
}

/// A big-endian EXIF block with an orientation of 6, after the four bytes that say where it begins.
const Bytes exifBox = {0,    0, 0, 0, 'M', 'M', 0, 42, 0, 0, 0, 8, 0, 1, 1,
                       0x12, 0, 3, 0, 0,   0,   1, 0,  6, 0, 0, 0, 0, 0, 0};

} // namespace

TEST(JXLDecoder, losslessPicturesOfAllLayoutsAreExact) {
    for (const RowFormat& format : allLayouts(31, 20)) {
        const PixelBuffer photo = makePhoto(format);
        const Decoded decoded = decodeSound(jxl::codec, makeJXL(photo));
        EXPECT_TRUE(samePicture(decoded.pixels, photo));
        EXPECT_EQ(decoded.frame().format, format);
        EXPECT_FALSE(decoded.frame().profile);
        EXPECT_EQ(decoded.contents, FileContents{});
    }
}

TEST(JXLDecoder, lossyPicturesAreNearlyTheSame) {
    const PixelBuffer photo = makePhoto(rgb);
    EXPECT_TRUE(samePicture(
        decodeSound(jxl::codec, JXLRecipe{.pixels = photo, .isLossless = false}.make()).pixels, photo, 12));
}

TEST(JXLDecoder, theOrientationOfTheCodestreamIsApplied) {
    const PixelBuffer photo = makePhoto(rgb);
    for (int orientation = 1; orientation <= 8; ++orientation) {
        const Decoded decoded =
            decodeSound(jxl::codec, JXLRecipe{.pixels = photo, .orientation = orientation}.make());
        EXPECT_TRUE(samePicture(decoded.pixels, shown(photo, orientation))) << orientation;
        EXPECT_EQ(decoded.frame().quarterTurns, 0);
    }
}

TEST(JXLDecoder, profilesOfOtherSpacesAreKept) {
    JXLRecipe recipe{.pixels = makePhoto(rgb)};
    recipe.icc = Bytes(ColorProfile::adobeRGB().bytes().begin(), ColorProfile::adobeRGB().bytes().end());
    EXPECT_EQ(decodeSound(jxl::codec, recipe.make()).frame().profile, ColorProfile::adobeRGB());
    recipe.icc.clear();
    recipe.color.primaries = JXL_PRIMARIES_P3;
    EXPECT_TRUE(decodeSound(jxl::codec, recipe.make()).frame().profile.has_value());
}

TEST(JXLDecoder, lossyPicturesKeepTheirProfileAndItsColours) {
    const PixelBuffer green = makePicture({31, 20}, [](auto x, auto y, std::size_t c) {
        return c == 1 ? 240u : c == 0 ? 10 + x : 20 + y; // outside sRGB
    });
    JXLRecipe recipe{.pixels = green, .isLossless = false};
    recipe.icc = Bytes(ColorProfile::adobeRGB().bytes().begin(), ColorProfile::adobeRGB().bytes().end());
    const Decoded decoded = decodeSound(jxl::codec, recipe.make());
    EXPECT_EQ(decoded.frame().profile, ColorProfile::adobeRGB());
    EXPECT_EQ(decoded.frame().format, green.format);
    EXPECT_TRUE(samePicture(decoded.pixels, green, 4));
}

TEST(JXLDecoder, theFirstFrameOfAnAnimationIsDecodedAndAllAreCounted) {
    const PixelBuffer photo = makePhoto(rgb);
    const Decoded decoded = decodeSound(jxl::codec, JXLRecipe{.pixels = photo, .frames = 5}.make());
    EXPECT_TRUE(samePicture(decoded.pixels, photo));
    EXPECT_EQ(decoded.contents, (FileContents{FileContents::Kind::animation, 5}));
}

TEST(JXLDecoder, exifIsReadFromItsBoxAndItsOrientationDoesNotCount) {
    JXLRecipe recipe{.pixels = makePhoto(rgb)};
    for (const bool isCompressed : {false, true}) {
        recipe.exif = exifBox;
        recipe.isCompressedBox = isCompressed;
        Bytes upright(exifBox.begin() + 4, exifBox.end());
        upright[19] = 1;
        EXPECT_EQ(decodeSound(jxl::codec, recipe.make()).exif, upright) << isCompressed;
    }
}

TEST(JXLDecoder, aFileCutOffAnywhereIsRefused) {
    JXLRecipe recipe{.pixels = makePhoto({64, 64})};
    const Bytes file = recipe.make();
    for (std::size_t size = 0; size < file.size(); size += 1 + file.size() / 40)
        EXPECT_TRUE(
            failsToDecode(jxl::codec, Bytes(file.begin(), file.begin() + static_cast<std::ptrdiff_t>(size))))
            << size;
}

TEST(JXLDecoder, aMissingLibraryIsReportedWithItsPackage) {
    const Result<jxl::Functions> functions = jxl::loadFunctions({"libjxl.so.0"}, {"libjxl_threads.so.0.7"});
    ASSERT_FALSE(functions.ok());
    EXPECT_EQ(functions.failure().reason, Reason::unsupported);
    EXPECT_NE(functions.failure().text.find("libjxl0.7"), std::string::npos);
}

} // namespace kestrine::testing
