#include "tests/platform/imageio/Decoded.h"
#include "tests/platform/imageio/png/PNGFile.h"
#include "tests/support/Pictures.h"

namespace kestrine::testing {

namespace {

/// Changes the size in the header chunk, and its checksum.
void claimSize(Bytes& file, std::uint32_t width, std::uint32_t height) {
    std::uint32_t checksum = 0xFFFFFFFF;
    const auto put = [&](std::size_t at, std::uint32_t number) {
        for (int i = 0; i < 4; ++i)
            file[at + static_cast<std::size_t>(i)] = static_cast<std::uint8_t>(number >> (24 - 8 * i));
    };
    put(16, width);
    put(20, height);
    for (std::size_t at = 12; at < 29; ++at) {
        checksum ^= file[at];
        for (int bit = 0; bit < 8; ++bit)
            checksum = checksum >> 1 ^ (checksum & 1 ? 0xEDB88320 : 0);
    }
    put(29, ~checksum);
}

} // namespace

TEST(PNGDecoder, everyColourTypeAndDepthIsDecoded) {
    struct Case {
        int colorType, bits;
        ColorModel model;
        bool alpha;
    };
    for (const Case& c : {Case{PNG_COLOR_TYPE_GRAY, 1, ColorModel::gray, false},
                          {PNG_COLOR_TYPE_GRAY, 2, ColorModel::gray, false},
                          {PNG_COLOR_TYPE_GRAY, 4, ColorModel::gray, false},
                          {PNG_COLOR_TYPE_GRAY, 8, ColorModel::gray, false},
                          {PNG_COLOR_TYPE_GRAY, 16, ColorModel::gray, false},
                          {PNG_COLOR_TYPE_GRAY_ALPHA, 8, ColorModel::gray, true},
                          {PNG_COLOR_TYPE_GRAY_ALPHA, 16, ColorModel::gray, true},
                          {PNG_COLOR_TYPE_RGB, 8, ColorModel::rgb, false},
                          {PNG_COLOR_TYPE_RGB, 16, ColorModel::rgb, false},
                          {PNG_COLOR_TYPE_RGB_ALPHA, 8, ColorModel::rgb, true},
                          {PNG_COLOR_TYPE_RGB_ALPHA, 16, ColorModel::rgb, true}})
        for (const bool interlaced : {false, true}) {
            SCOPED_TRACE(std::to_string(c.colorType) + " " + std::to_string(c.bits)
                         + (interlaced ? "i" : ""));
            PNGFile file = patternPNG(c.colorType, c.bits);
            file.interlaced = interlaced;
            const RowFormat format{19, 11, c.model, c.alpha,
                                   c.bits == 16 ? SampleDepth::bits16 : SampleDepth::bits8};
            const unsigned scale = c.bits < 8 ? 255 / ((1u << c.bits) - 1) : 1;
            const PixelBuffer expected = makePicture(format, [&](auto x, auto y, std::size_t channel) {
                return scale * file.sample(x, y, static_cast<int>(channel));
            });
            EXPECT_TRUE(samePicture(decodeSound(png::codec, file.make()).pixels, expected));
        }
}

TEST(PNGDecoder, indicesBecomeColours) {
    const Decoded decoded = decodeSound(png::codec, indexedPNG().make());
    const PixelBuffer expected = makePicture({5, 3}, [](auto x, auto y, std::size_t c) {
        const png_color& color = pngPalette[(x + y) % 4];
        return c == 0 ? color.red : c == 1 ? color.green : color.blue;
    });
    EXPECT_TRUE(samePicture(decoded.pixels, expected));
}

TEST(PNGDecoder, transparentIndicesBecomeAlpha) {
    PNGFile file = indexedPNG();
    file.before = [](auto png, auto info) {
        const png_byte alpha[] = {0, 128};
        png_set_PLTE(png, info, pngPalette, 4);
        png_set_tRNS(png, info, alpha, 2, nullptr);
    };
    const Decoded decoded = decodeSound(png::codec, file.make());
    ASSERT_TRUE(decoded.pixels.format.hasAlpha);
    const std::vector<unsigned> alpha = {sampleAt(decoded.pixels, 0, 0, 3), sampleAt(decoded.pixels, 1, 0, 3),
                                         sampleAt(decoded.pixels, 2, 0, 3)};
    EXPECT_EQ(alpha, (std::vector<unsigned>{0, 128, 255}));
}

TEST(PNGDecoder, aTransparentColourBecomesAlpha) {
    for (const int bits : {8, 16})
        for (const int type : {PNG_COLOR_TYPE_GRAY, PNG_COLOR_TYPE_RGB}) {
            PNGFile file{.width = 2, .height = 1, .bitDepth = bits, .colorType = type};
            file.sample = [](auto x, auto, int) { return x == 0 ? 77u : 78u; };
            file.before = [](auto png, auto info) {
                png_color_16 key{.index = 0, .red = 77, .green = 77, .blue = 77, .gray = 77};
                png_set_tRNS(png, info, nullptr, 0, &key);
            };
            const PixelBuffer pixels = decodeSound(png::codec, file.make()).pixels;
            ASSERT_TRUE(pixels.format.hasAlpha);
            const std::size_t alpha = pixels.format.colorChannels();
            EXPECT_EQ(sampleAt(pixels, 0, 0, alpha), 0u);
            EXPECT_EQ(sampleAt(pixels, 1, 0, alpha), (1u << bits) - 1);
        }
}

TEST(PNGDecoder, aSizeThatTheFileCannotHoldIsRefusedAtOnce) {
    Bytes file = PNGFile{.width = 1, .height = 1}.make();
    claimSize(file, 30'000, 30'000);
    const Result<Decoded> decoded = decode(png::codec, file);
    ASSERT_FALSE(decoded.ok());
    EXPECT_EQ(decoded.failure().reason, Reason::truncated);
}

TEST(PNGDecoder, aLargeInterlacedPictureIsNotHeldInMemory) {
    Bytes file = PNGFile{.width = 1, .height = 1, .interlaced = true}.make();
    claimSize(file, 30'000, 30'000);
    file.resize(3'000'000); // long enough for the pixels
    const auto decoder = png::codec.open(readerOfBytes(std::move(file)));
    ASSERT_TRUE(decoder.ok());
    EXPECT_EQ((*decoder)->frames().front().heldBytes, 0U);
    EXPECT_TRUE((*decoder)->rows(0, 0).ok());
}

TEST(PNGDecoder, aPictureBeyondTheLimitsIsRefused) {
    Bytes file = PNGFile{.width = 1, .height = 1}.make();
    claimSize(file, 40'000, 40'000);
    const Result<Decoded> decoded = decode(png::codec, file);
    ASSERT_FALSE(decoded.ok());
    EXPECT_EQ(decoded.failure().reason, Reason::tooLarge);
}

TEST(PNGDecoder, rowsCanBeReadAgainAndOutliveTheDecoder) {
    auto decoder = png::codec.open(readerOfBytes(indexedPNG().make()));
    ASSERT_TRUE(decoder.ok());
    auto first = (*decoder)->rows(0, 0), second = (*decoder)->rows(0, 0);
    ASSERT_TRUE(first.ok() && second.ok());
    decoder->reset();
    EXPECT_TRUE(samePicture(*readAllRows(**first), *readAllRows(**second)));
}

} // namespace kestrine::testing
