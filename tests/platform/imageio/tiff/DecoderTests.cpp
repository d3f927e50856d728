#include "platform/coregraphics/RowsAhead.h"
#include "tests/platform/imageio/Decoded.h"
#include "tests/platform/imageio/tiff/TIFFRecipe.h"
#include "tests/support/Pictures.h"

#include <bit>
#include <cmath>

namespace kestrine::testing {

namespace {

using Numbers = std::vector<std::uint16_t>;

/// The expected pixels of a page with grey or RGB samples of full range.
PixelBuffer expectedOf(const TIFFRecipe& page, bool hasAlpha = false) {
    const bool isGray = page.photometric == PHOTOMETRIC_MINISBLACK;
    const RowFormat format{page.width, page.height, isGray ? ColorModel::gray : ColorModel::rgb, hasAlpha,
                           page.bits > 8 ? SampleDepth::bits16 : SampleDepth::bits8};
    return makePicture(
        format, [&](auto x, auto y, std::size_t c) { return page.stored(x, y, static_cast<unsigned>(c)); });
}

TIFFRecipe grayPage(std::uint16_t bits = 8) {
    return {.bits = bits, .samples = 1, .photometric = PHOTOMETRIC_MINISBLACK};
}

/// A page of one pixel with these samples.
TIFFRecipe pixelPage(std::uint16_t photometric, std::uint16_t bits, std::vector<std::uint32_t> samples,
                     std::vector<std::uint16_t> extraSamples = {}) {
    TIFFRecipe page{
        .width = 1, .height = 1, .bits = bits, .photometric = photometric, .extraSamples = extraSamples};
    page.samples = static_cast<std::uint16_t>(samples.size());
    page.sample = [samples](auto, auto, unsigned s) { return samples[s]; };
    return page;
}

std::vector<unsigned> firstPixel(const PixelBuffer& picture) {
    std::vector<unsigned> samples;
    for (std::size_t c = 0; c < picture.format.channels(); ++c)
        samples.push_back(sampleAt(picture, 0, 0, c));
    return samples;
}

std::vector<unsigned> deliveredPixel(const TIFFRecipe& page) {
    return firstPixel(decodeSound(tiff::codec, makeTIFF(page)).pixels);
}

using Pixel = std::vector<unsigned>;

} // namespace

TEST(TIFFDecoder, aLargePageIsTheSameWithOneThreadAndWithSeveral) {
    for (const std::uint16_t planar : Numbers{PLANARCONFIG_CONTIG, PLANARCONFIG_SEPARATE})
        for (const std::uint32_t tile : {0, 64})
            for (const std::uint32_t rowsPerStrip : {1, 7, 300, 901}) {
                SCOPED_TRACE(::testing::Message()
                             << "planar " << planar << ", tile " << tile << ", rows " << rowsPerStrip);
                const TIFFRecipe page{.width = 611,
                                      .height = 901,
                                      .compression = COMPRESSION_LZW,
                                      .planar = planar,
                                      .rowsPerStrip = rowsPerStrip,
                                      .tileWidth = tile,
                                      .tileHeight = tile};
                const Bytes file = makeTIFF(page);
                std::optional<CrewScope> crew(std::make_shared<Crew>(3));
                const PixelBuffer several = decodeSound(tiff::codec, file).pixels;
                crew.reset();
                EXPECT_EQ(several.bytes, decodeSound(tiff::codec, file).pixels.bytes);
                EXPECT_EQ(several.bytes, expectedOf(page).bytes);
            }
}

TEST(TIFFDecoder, aDamagedLargePageAlsoFailsWithSeveralThreads) {
    const CrewScope crew(std::make_shared<Crew>(3));
    const TIFFRecipe page{.width = 611, .height = 901, .compression = COMPRESSION_LZW};
    Bytes file = makeTIFF(page);
    std::fill(file.begin() + 5000, file.begin() + 9000, std::uint8_t{0xFF});
    EXPECT_FALSE(decode(tiff::codec, file));
}

TEST(TIFFDecoder, everyStorageOfRGBIsRead) {
    for (const std::uint16_t bits : Numbers{8, 16})
        for (const std::uint16_t planar : Numbers{PLANARCONFIG_CONTIG, PLANARCONFIG_SEPARATE})
            for (const std::uint32_t tile : {0, 16})
                for (const std::uint16_t compression :
                     Numbers{COMPRESSION_NONE, COMPRESSION_LZW, COMPRESSION_ADOBE_DEFLATE,
                             COMPRESSION_PACKBITS, COMPRESSION_ZSTD, COMPRESSION_LZMA}) {
                    SCOPED_TRACE(::testing::Message() << bits << " bits, planar " << planar << ", tile "
                                                      << tile << ", compression " << compression);
                    const TIFFRecipe page{.bits = bits,
                                          .compression = compression,
                                          .planar = planar,
                                          .tileWidth = tile,
                                          .tileHeight = tile};
                    for (const char* mode : {"wl", "wb", "wl8", "wb8"})
                        EXPECT_TRUE(samePicture(decodeSound(tiff::codec, makeTIFF(page, mode)).pixels,
                                                expectedOf(page)));
                }
}

TEST(TIFFDecoder, predictorsAreUndone) {
    for (const std::uint16_t bits : Numbers{8, 16}) {
        TIFFRecipe page{.bits = bits, .compression = COMPRESSION_LZW};
        page.tags = [](TIFF* tiff) { TIFFSetField(tiff, TIFFTAG_PREDICTOR, PREDICTOR_HORIZONTAL); };
        EXPECT_TRUE(samePicture(decodeSound(tiff::codec, makeTIFF(page, "wb")).pixels, expectedOf(page)));
    }
}

TEST(TIFFDecoder, greyOfEveryDepthIsScaledToTheFullRange) {
    for (std::uint16_t bits = 1; bits <= 16; ++bits)
        for (const std::uint32_t tile : {0, 16}) {
            TIFFRecipe page = grayPage(bits);
            page.tileWidth = page.tileHeight = tile;
            const double range = bits > 8 ? 65535 : 255, largest = (1u << bits) - 1;
            const RowFormat format{19, 11, ColorModel::gray, false,
                                   bits > 8 ? SampleDepth::bits16 : SampleDepth::bits8};
            const PixelBuffer expected = makePicture(format, [&](auto x, auto y, std::size_t) {
                return static_cast<unsigned>(std::lround(page.stored(x, y, 0) * range / largest));
            });
            EXPECT_TRUE(samePicture(decodeSound(tiff::codec, makeTIFF(page)).pixels, expected)) << bits;
        }
}

TEST(TIFFDecoder, greyIsInvertedIfZeroIsWhite) {
    EXPECT_EQ(deliveredPixel(pixelPage(PHOTOMETRIC_MINISWHITE, 1, {0})), Pixel{255});
    EXPECT_EQ(deliveredPixel(pixelPage(PHOTOMETRIC_MINISWHITE, 8, {1})), Pixel{254});
    EXPECT_EQ(deliveredPixel(pixelPage(PHOTOMETRIC_MINISWHITE, 16, {0x1234})), Pixel{0xEDCB});
    const Pixel withAlpha = {254, 77};
    EXPECT_EQ(deliveredPixel(pixelPage(PHOTOMETRIC_MINISWHITE, 8, {1, 77}, {EXTRASAMPLE_UNASSALPHA})),
              withAlpha);
}

TEST(TIFFDecoder, faxPagesAreRead) {
    for (const std::uint16_t compression :
         Numbers{COMPRESSION_CCITTRLE, COMPRESSION_CCITTFAX3, COMPRESSION_CCITTFAX4}) {
        TIFFRecipe page{
            .bits = 1, .samples = 1, .photometric = PHOTOMETRIC_MINISWHITE, .compression = compression};
        page.sample = [](auto x, auto y, auto) { return (x / 3 + y) % 2; };
        const PixelBuffer expected =
            makePicture({19, 11, ColorModel::gray},
                        [&](auto x, auto y, std::size_t) { return page.stored(x, y, 0) ? 0u : 255u; });
        EXPECT_TRUE(samePicture(decodeSound(tiff::codec, makeTIFF(page)).pixels, expected)) << compression;
    }
}

TEST(TIFFDecoder, palettesBecomeRGBAndAreReturnedAsColourTable) {
    for (const std::uint16_t bits : Numbers{1, 2, 4, 8})
        for (const unsigned scale : {1u, 256u}) {
            TIFFRecipe page{.bits = bits, .samples = 1, .photometric = PHOTOMETRIC_PALETTE};
            page.tags = [scale](TIFF* tiff) {
                std::vector<std::uint16_t> maps[3];
                for (unsigned c = 0; c < 3; ++c)
                    for (unsigned i = 0; i < 256; ++i)
                        maps[c].push_back(static_cast<std::uint16_t>((10 + 3 * i + 50 * c) % 256 * scale));
                TIFFSetField(tiff, TIFFTAG_COLORMAP, maps[0].data(), maps[1].data(), maps[2].data());
            };
            const Decoded decoded = decodeSound(tiff::codec, makeTIFF(page));
            const PixelBuffer expected = makePicture({19, 11}, [&](auto x, auto y, std::size_t c) {
                return static_cast<unsigned>((10 + 3 * page.stored(x, y, 0) + 50 * c) % 256);
            });
            EXPECT_TRUE(samePicture(decoded.pixels, expected)) << bits << " bits, scale " << scale;
            ASSERT_EQ(decoded.colorTable.size(), 3u << bits);
            EXPECT_EQ(decoded.colorTable[4], 63);
        }
}

TEST(TIFFDecoder, floatsAreClampedAndBecome16Bits) {
    struct Case {
        float stored;
        unsigned delivered;
    };
    for (const Case& c :
         {Case{0, 0}, {0.5f, 32768}, {1, 65535}, {7.5f, 65535}, {-1, 0}, {std::nanf(""), 0}}) {
        TIFFRecipe page = pixelPage(PHOTOMETRIC_MINISBLACK, 32, {std::bit_cast<std::uint32_t>(c.stored)});
        page.tags = [](TIFF* tiff) { TIFFSetField(tiff, TIFFTAG_SAMPLEFORMAT, SAMPLEFORMAT_IEEEFP); };
        EXPECT_EQ(firstPixel(decodeSound(tiff::codec, makeTIFF(page, "wb")).pixels), Pixel{c.delivered})
            << c.stored;
    }
}

TEST(TIFFDecoder, associatedAlphaIsDividedOutAndRounded) {
    const auto pixel = [](std::uint16_t bits, std::vector<std::uint32_t> samples) {
        return deliveredPixel(pixelPage(PHOTOMETRIC_RGB, bits, samples, {EXTRASAMPLE_ASSOCALPHA}));
    };
    EXPECT_EQ(pixel(8, {10, 20, 64, 128}), (Pixel{20, 40, 128, 128}));
    EXPECT_EQ(pixel(8, {1, 2, 3, 3}), (Pixel{85, 170, 255, 3}));
    EXPECT_EQ(pixel(8, {200, 0, 0, 100}), (Pixel{255, 0, 0, 100}));
    EXPECT_EQ(pixel(8, {9, 9, 9, 0}), (Pixel{0, 0, 0, 0}));
    EXPECT_EQ(pixel(16, {1000, 30000, 0, 40000}), (Pixel{1638, 49151, 0, 40000}));
}

TEST(TIFFDecoder, otherAlphaIsNotChanged) {
    for (const std::uint16_t bits : Numbers{8, 16})
        for (const std::uint16_t planar : Numbers{PLANARCONFIG_CONTIG, PLANARCONFIG_SEPARATE}) {
            const TIFFRecipe page{
                .bits = bits, .samples = 4, .planar = planar, .extraSamples = {EXTRASAMPLE_UNASSALPHA}};
            EXPECT_TRUE(samePicture(decodeSound(tiff::codec, makeTIFF(page)).pixels, expectedOf(page, true)));
        }
}

TEST(TIFFDecoder, samplesThatAreNotAlphaAreIgnored) {
    for (const std::uint16_t planar : Numbers{PLANARCONFIG_CONTIG, PLANARCONFIG_SEPARATE}) {
        const TIFFRecipe page{.samples = 5,
                              .planar = planar,
                              .extraSamples = {EXTRASAMPLE_UNSPECIFIED, EXTRASAMPLE_UNSPECIFIED}};
        EXPECT_TRUE(samePicture(decodeSound(tiff::codec, makeTIFF(page)).pixels, expectedOf(page)));
    }
    const Pixel secondIsAlpha = {1, 2, 3, 200};
    EXPECT_EQ(deliveredPixel(pixelPage(PHOTOMETRIC_RGB, 8, {1, 2, 3, 99, 200},
                                       {EXTRASAMPLE_UNSPECIFIED, EXTRASAMPLE_UNASSALPHA})),
              secondIsAlpha);
}

TEST(TIFFDecoder, cmykBecomesSRGBWithItsProfile) {
    for (const std::uint16_t bits : Numbers{8, 16}) {
        const std::uint32_t full = (1u << bits) - 1;
        EXPECT_EQ(deliveredPixel(pixelPage(PHOTOMETRIC_SEPARATED, bits, {0, 0, 0, 0})),
                  (Pixel{full, full, full}));
        EXPECT_EQ(deliveredPixel(pixelPage(PHOTOMETRIC_SEPARATED, bits, {full, 0, 0, 0})),
                  (Pixel{0, full, full}));
        EXPECT_EQ(deliveredPixel(pixelPage(PHOTOMETRIC_SEPARATED, bits, {0, full, full, full})),
                  (Pixel{0, 0, 0}));
    }
    const Bytes file = makeTIFF(pixelPage(PHOTOMETRIC_SEPARATED, 8, {0, 0, 0, 0}));
    EXPECT_EQ(decodeSound(tiff::codec, file).frame().profile, ColorProfile::sRGB());
}

TEST(TIFFDecoder, alphaAfterCMYKIsKept) {
    const TIFFRecipe page = pixelPage(PHOTOMETRIC_SEPARATED, 8, {255, 0, 0, 0, 66}, {EXTRASAMPLE_UNASSALPHA});
    EXPECT_EQ(deliveredPixel(page), (Pixel{0, 255, 255, 66}));
}

TEST(TIFFDecoder, labBecomesSRGBWithItsProfile) {
    struct Case {
        std::uint16_t photometric, bits;
        std::vector<std::uint32_t> lab; // L* 53.39, a* 0, b* 0: grey 128
    };
    for (const Case& c : {Case{PHOTOMETRIC_CIELAB, 8, {137, 0, 0}},
                          {PHOTOMETRIC_ICCLAB, 8, {137, 128, 128}},
                          {PHOTOMETRIC_CIELAB, 16, {35103, 0, 0}},
                          {PHOTOMETRIC_ICCLAB, 16, {34966, 32768, 32768}}}) {
        const Decoded decoded = decodeSound(tiff::codec, makeTIFF(pixelPage(c.photometric, c.bits, c.lab)));
        const unsigned gray = c.bits == 8 ? 128 : 128 * 257, tolerance = c.bits == 8 ? 1 : 100;
        for (const unsigned sample : firstPixel(decoded.pixels))
            EXPECT_NEAR(sample, gray, tolerance) << c.photometric << " " << c.bits;
        EXPECT_EQ(decoded.frame().profile, ColorProfile::sRGB());
    }
}

TEST(TIFFDecoder, aAndBOfLabAreSigned) {
    const Pixel red = deliveredPixel(pixelPage(PHOTOMETRIC_CIELAB, 8, {128, 60, 40}));
    const Pixel green = deliveredPixel(pixelPage(PHOTOMETRIC_ICCLAB, 8, {128, 128 - 50, 128 + 40}));
    EXPECT_GT(red[0], red[1] + 80);
    EXPECT_GT(green[1], green[0] + 80);
}

TEST(TIFFDecoder, jpegCompressedPagesAreRead) {
    for (const std::uint32_t tile : {0, 16})
        for (const std::uint16_t photometric : Numbers{PHOTOMETRIC_YCBCR, PHOTOMETRIC_RGB}) {
            TIFFRecipe page{.width = 33,
                            .height = 35,
                            .photometric = photometric,
                            .compression = COMPRESSION_JPEG,
                            .rowsPerStrip = 16,
                            .tileWidth = tile,
                            .tileHeight = tile};
            page.sample = [](auto x, auto y, auto s) { return 20 + 2 * x + 3 * y + 20 * s; };
            page.tags = [](TIFF* tiff) {
                TIFFSetField(tiff, TIFFTAG_JPEGQUALITY, 100);
                TIFFSetField(tiff, TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
            };
            const PixelBuffer pixels = decodeSound(tiff::codec, makeTIFF(page)).pixels;
            page.photometric = PHOTOMETRIC_RGB;
            EXPECT_TRUE(samePicture(pixels, expectedOf(page), 4)) << photometric << " tile " << tile;
        }
}

TEST(TIFFDecoder, ycbcrWithoutJPEGIsRendered) {
    for (const std::uint32_t tile : {0, 16}) {
        TIFFRecipe page{.photometric = PHOTOMETRIC_YCBCR,
                        .compression = COMPRESSION_LZW,
                        .tileWidth = tile,
                        .tileHeight = tile};
        page.sample = [](auto x, auto y, unsigned s) { return s == 0 ? 40 + 5 * x + 3 * y : 128; };
        page.tags = [](TIFF* tiff) {
            TIFFSetField(tiff, TIFFTAG_YCBCRSUBSAMPLING, 1, 1);
            const float range[] = {0, 255, 128, 255, 128, 255};
            TIFFSetField(tiff, TIFFTAG_REFERENCEBLACKWHITE, range);
        };
        const PixelBuffer expected =
            makePicture({19, 11}, [](auto x, auto y, std::size_t) { return 40 + 5 * x + 3 * y; });
        EXPECT_TRUE(samePicture(decodeSound(tiff::codec, makeTIFF(page)).pixels, expected, 1)) << tile;
    }
}

TEST(TIFFDecoder, theOrientationIsNotApplied) {
    for (const std::uint16_t photometric : Numbers{PHOTOMETRIC_RGB, PHOTOMETRIC_YCBCR}) {
        TIFFRecipe upright{.photometric = photometric}, turned;
        upright.tags = [&](TIFF* tiff) { TIFFSetField(tiff, TIFFTAG_YCBCRSUBSAMPLING, 1, 1); };
        turned = upright;
        turned.tags = [&](TIFF* tiff) {
            upright.tags(tiff);
            TIFFSetField(tiff, TIFFTAG_ORIENTATION, ORIENTATION_BOTRIGHT);
        };
        EXPECT_TRUE(samePicture(decodeSound(tiff::codec, makeTIFF(turned)).pixels,
                                decodeSound(tiff::codec, makeTIFF(upright)).pixels));
    }
}

TEST(TIFFDecoder, theResolutionIsPerInch) {
    struct Case {
        std::uint16_t unit;
        float value;
        double perInch;
    };
    for (const Case& c : {Case{RESUNIT_INCH, 300, 300},
                          {RESUNIT_CENTIMETER, 100, 254},
                          {RESUNIT_NONE, 300, 72},
                          {RESUNIT_INCH, 0, 72},
                          {RESUNIT_INCH, 2e6f, 72}}) {
        TIFFRecipe page;
        page.tags = [&](TIFF* tiff) {
            TIFFSetField(tiff, TIFFTAG_RESOLUTIONUNIT, c.unit);
            TIFFSetField(tiff, TIFFTAG_XRESOLUTION, c.value);
            TIFFSetField(tiff, TIFFTAG_YRESOLUTION, 72.0f);
        };
        EXPECT_NEAR(decodeSound(tiff::codec, makeTIFF(page)).frame().resolution.horizontal, c.perInch, 1e-6);
    }
    EXPECT_EQ(decodeSound(tiff::codec, makeTIFF(TIFFRecipe{})).frame().resolution, Resolution{});
}

TEST(TIFFDecoder, theProfileIsRead) {
    const ColorProfile profile = ColorProfile::adobeRGB();
    TIFFRecipe page;
    page.tags = [&](TIFF* tiff) {
        TIFFSetField(tiff, TIFFTAG_ICCPROFILE, static_cast<std::uint32_t>(profile.bytes().size()),
                     profile.bytes().data());
    };
    EXPECT_EQ(decodeSound(tiff::codec, makeTIFF(page)).frame().profile, profile);
    EXPECT_FALSE(decodeSound(tiff::codec, makeTIFF(TIFFRecipe{})).frame().profile.has_value());
    page.samples = 1;
    page.photometric = PHOTOMETRIC_MINISBLACK;
    EXPECT_FALSE(decodeSound(tiff::codec, makeTIFF(page)).frame().profile.has_value())
        << "an RGB profile on grey";
}

TEST(TIFFDecoder, largeStripsAreReadRowByRow) {
    for (const std::uint16_t planar : Numbers{PLANARCONFIG_CONTIG, PLANARCONFIG_SEPARATE}) {
        TIFFRecipe page{
            .width = 1500, .height = 1450, .bits = 16, .samples = 2, .photometric = PHOTOMETRIC_MINISBLACK};
        page.compression = COMPRESSION_LZW;
        page.planar = planar;
        page.rowsPerStrip = page.height;
        page.extraSamples = {EXTRASAMPLE_UNASSALPHA};
        page.sample = [](auto x, auto y, auto s) { return 40 * x + 7 * y + 900 * s; };
        EXPECT_TRUE(samePicture(decodeSound(tiff::codec, makeTIFF(page)).pixels, expectedOf(page, true)));
    }
}

} // namespace kestrine::testing
