#include "platform/host/BigEndian.h"
#include "platform/imageio/LocalSource.h"
#include "platform/imageio/Render.h"
#include "platform/imageio/jp2/Library.h"
#include "tests/platform/imageio/Decoded.h"
#include "tests/platform/imageio/jp2/JP2Recipe.h"
#include "tests/support/Pictures.h"

#include <algorithm>
#include <string_view>

namespace kestrine::testing {

namespace {

constexpr RowFormat rgb{75, 50};

PixelBuffer photo(std::uint32_t width = 75, std::uint32_t height = 50) { return makePhoto({width, height}); }

void appendBox(Bytes& file, std::string_view name, const Bytes& content) {
    appendBigEndian(file, content.size() + 8, 4);
    file.insert(file.end(), name.begin(), name.end());
    file.insert(file.end(), content.begin(), content.end());
}

/// `file` with further boxes at the end of its header.
Bytes withBoxes(Bytes file, const Bytes& boxes) {
    constexpr std::string_view name = "jp2h";
    const auto header = std::search(file.begin(), file.end(), name.begin(), name.end()) - 4;
    const std::uint64_t length = bigEndian(ByteView(&*header, 4));
    Bytes longer;
    appendBigEndian(longer, length + boxes.size(), 4);
    std::ranges::copy(longer, header);
    file.insert(header + static_cast<std::ptrdiff_t>(length), boxes.begin(), boxes.end());
    return file;
}

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

TEST(JP2Decoder, thePaletteIsAppliedOnceToEveryTile) {
    const auto gray = [](auto x, auto y, std::size_t) { return x + y; };
    const JP2Recipe recipe{
        .pixels = makePicture({75, 50, ColorModel::gray}, gray), .tile = 32, .space = OPJ_CLRSPC_GRAY};
    Bytes palette = {1, 0, 3, 7, 7, 7}; // 256 entries of three columns of 8 bits
    for (unsigned i = 0; i < 256; ++i)
        for (const unsigned value : {255 - i, i / 2, 3 * i % 256})
            palette.push_back(static_cast<std::uint8_t>(value));
    Bytes boxes;
    appendBox(boxes, "pclr", palette);
    appendBox(boxes, "cmap", {0, 0, 1, 0, 0, 0, 1, 1, 0, 0, 1, 2});
    EXPECT_TRUE(samePicture(decodeSound(jp2::codec, withBoxes(recipe.make(), boxes)).pixels,
                            makePicture(rgb, [](auto x, auto y, std::size_t c) {
                                const unsigned i = x + y;
                                return c == 0 ? 255 - i : c == 1 ? i / 2 : 3 * i % 256;
                            })));
}

TEST(JP2Decoder, channelsStoredInAnotherOrderAreSortedOnce) {
    Bytes boxes; // blue, green, red
    appendBox(boxes, "cdef", {0, 3, 0, 0, 0, 0, 0, 3, 0, 1, 0, 0, 0, 2, 0, 2, 0, 0, 0, 1});
    const auto stored = [](auto x, auto y, std::size_t c) {
        return static_cast<unsigned>((c + 1) * (x + y) / 2);
    };
    const JP2Recipe recipe{.pixels = makePicture(rgb, stored), .tile = 32};
    EXPECT_TRUE(
        samePicture(decodeSound(jp2::codec, withBoxes(recipe.make(), boxes)).pixels,
                    makePicture(rgb, [&](auto x, auto y, std::size_t c) { return stored(x, y, 2 - c); })));
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
