#include "platform/imageio/LocalSource.h"
#include "platform/imageio/Render.h"
#include "platform/imageio/jp2/Library.h"
#include "tests/platform/imageio/Decoded.h"
#include "tests/platform/imageio/jp2/JP2Recipe.h"
#include "tests/support/Pictures.h"

namespace kestrine::testing {

namespace {

constexpr RowFormat rgb{75, 50};

PixelBuffer photo(std::uint32_t width = 75, std::uint32_t height = 50) { return makePhoto({width, height}); }

PixelBuffer pixelsOf(const JP2Recipe& recipe) { return decodeSound(jp2::codec, recipe.make()).pixels; }

} // namespace

TEST(JP2Decoder, losslessPicturesOfAllLayoutsAreExact) {
    for (const RowFormat& format : allLayouts(75, 50))
        for (const bool isBare : {false, true}) {
            JP2Recipe recipe{.pixels = makePhoto(format), .isBare = isBare};
            recipe.space = format.model == ColorModel::gray ? OPJ_CLRSPC_GRAY : OPJ_CLRSPC_SRGB;
            const Decoded decoded = decodeSound(jp2::codec, recipe.make());
            EXPECT_TRUE(samePicture(decoded.pixels, recipe.pixels));
            EXPECT_EQ(decoded.frame().format, format);
            EXPECT_FALSE(decoded.frame().profile);
        }
}

TEST(JP2Decoder, tilesOfAnySizeAndOriginGiveTheSamePicture) {
    for (const std::uint32_t tile : {8U, 16U, 33U, 64U, 200U})
        for (const std::uint32_t origin : {0U, 5U, 7U})
            EXPECT_TRUE(samePicture(
                pixelsOf(
                    {.pixels = photo(), .tile = tile, .left = origin, .top = origin / 2, .resolutions = 3}),
                photo()))
                << tile << " " << origin;
}

TEST(JP2Decoder, samplesOfAnyNumberOfBitsFillTheRange) {
    const PixelBuffer white = makePicture(rgb, [](auto, auto, std::size_t) { return 255u; });
    for (const unsigned bits : {1U, 4U, 7U})
        for (const bool isSigned : {false, true})
            EXPECT_TRUE(samePicture(pixelsOf({.pixels = white, .bits = bits, .isSigned = isSigned}), white))
                << bits;
    RowFormat deep = rgb;
    deep.depth = SampleDepth::bits16;
    const PixelBuffer bright = makePicture(deep, [](auto, auto, std::size_t) { return 65535u; });
    EXPECT_TRUE(samePicture(pixelsOf({.pixels = bright, .bits = 12}), bright));
}

TEST(JP2Decoder, aFourthComponentIsAlphaAlsoWithoutAMark) {
    const PixelBuffer picture = makePhoto({20, 10, ColorModel::rgb, true});
    EXPECT_TRUE(samePicture(pixelsOf({.pixels = picture, .marksAlpha = false}), picture));
}

TEST(JP2Decoder, aProfileIsKept) {
    JP2Recipe recipe{.pixels = photo()};
    recipe.icc = Bytes(ColorProfile::adobeRGB().bytes().begin(), ColorProfile::adobeRGB().bytes().end());
    EXPECT_EQ(decodeSound(jp2::codec, recipe.make()).frame().profile, ColorProfile::adobeRGB());
}

TEST(JP2Decoder, storedYCbCrBecomesRGB) {
    const PixelBuffer red = makePicture(rgb, [](auto, auto, std::size_t c) {
        return c == 0 ? 76u : c == 1 ? 85u : 255u;
    });
    const PixelBuffer decoded = pixelsOf({.pixels = red, .space = OPJ_CLRSPC_SYCC});
    EXPECT_TRUE(samePicture(
        decoded, makePicture(rgb, [](auto, auto, std::size_t c) { return c == 0 ? 254u : 0u; }), 1));
}

TEST(JP2Decoder, aReducedDecodeRoundsSidesUpAndNeedsAnAlignedOrigin) {
    const auto decoder = *jp2::codec.open(readerOfBytes(JP2Recipe{.pixels = photo(), .tile = 32}.make()));
    EXPECT_EQ(decoder->frames().front().maxHalvings, 3);
    const RowSourcePointer rows = *decoder->rows(0, 3);
    EXPECT_EQ(rows->format().width, 10u);
    EXPECT_EQ(rows->format().height, 7u);
    EXPECT_TRUE(readAllRows(*rows).ok());
    const auto offset =
        *jp2::codec.open(readerOfBytes(JP2Recipe{.pixels = photo(), .left = 6, .top = 4}.make()));
    EXPECT_EQ(offset->frames().front().maxHalvings, 1);
}

TEST(JP2Decoder, aReductionIsNearlyThatOfAFullDecode) {
    const auto source =
        *LocalSource::open(readerOfBytes(JP2Recipe{.pixels = photo(400, 300), .tile = 128}.make()));
    const auto full = *LocalSource::open(readerOfBytes(encodeSound(tiff::encode, photo(400, 300))));
    const Resampling small{{0.1, 0, 40}, {0.1, 0, 30}, ResampleFilter::lanczos, Light::linear};
    EXPECT_TRUE(samePicture(*readPixels({source, 0, {small}}), *readPixels({full, 0, {small}}), 8));
}

TEST(JP2Decoder, aFileCutOffAnywhereIsRefused) {
    const Bytes file = JP2Recipe{.pixels = photo(), .tile = 32}.make();
    for (std::size_t size = 0; size < file.size() - 2; size += 1 + file.size() / 40)
        EXPECT_TRUE(
            failsToDecode(jp2::codec, Bytes(file.begin(), file.begin() + static_cast<std::ptrdiff_t>(size))))
            << size;
}

TEST(JP2Decoder, aMissingLibraryIsReportedWithItsPackage) {
    const Result<jp2::Functions> functions = jp2::loadFunctions({"libm.so.6"});
    ASSERT_FALSE(functions.ok());
    EXPECT_EQ(functions.failure().reason, Reason::unsupported);
    EXPECT_NE(functions.failure().text.find("libopenjp2-7"), std::string::npos);
}

} // namespace kestrine::testing
