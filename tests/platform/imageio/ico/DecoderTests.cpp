#include "tests/platform/imageio/Decoded.h"
#include "tests/support/Pictures.h"

namespace kestrine::testing {

namespace {

using Samples = std::vector<unsigned>;

void append(Bytes& bytes, unsigned value, int size) {
    for (int i = 0; i < size; ++i)
        bytes.push_back(static_cast<std::uint8_t>(value >> 8 * i));
}

void append(Bytes& bytes, const Bytes& more) { bytes.insert(bytes.end(), more.begin(), more.end()); }

/// The picture of an icon: a BMP without file header whose height counts twice.
Bytes pictureOf(unsigned width, unsigned height, unsigned bits, const Bytes& colorsAndMask) {
    Bytes picture;
    for (const unsigned field : {40u, width, 2 * height})
        append(picture, field, 4);
    append(picture, 1, 2);
    append(picture, bits, 2);
    picture.resize(40);
    append(picture, colorsAndMask);
    return picture;
}

/// An icon, or a cursor if `type` is 2, with these pictures. In its directory all have as many pixels.
Bytes iconOf(const std::vector<Bytes>& pictures, unsigned type = 1) {
    Bytes file;
    for (const unsigned field : {0u, type, static_cast<unsigned>(pictures.size())})
        append(file, field, 2);
    std::size_t offset = 6 + 16 * pictures.size();
    for (const Bytes& picture : pictures) {
        append(file, {2, 1, 0, 0, 7, 0, 9, 0});
        append(file, static_cast<unsigned>(picture.size()), 4);
        append(file, static_cast<unsigned>(offset), 4);
        offset += picture.size();
    }
    for (const Bytes& picture : pictures)
        append(file, picture);
    return file;
}

Samples samplesOf(const Bytes& file) {
    const PixelBuffer pixels = decodeSound(ico::codec, file).pixels;
    return {pixels.bytes.begin(), pixels.bytes.end()};
}

Reason reasonOf(const Bytes& file) { return decode(ico::codec, file).failure().reason; }

/// One pixel of 32 bits, with blue 1, green 2 and red 3.
Bytes onePixel(std::uint8_t alpha, std::uint8_t mask) {
    return pictureOf(1, 1, 32, {1, 2, 3, alpha, mask, 0, 0, 0});
}

} // namespace

TEST(ICODecoder, theMaskSaysWhichPixelsAreTransparent) {
    const Bytes lowerRow = {1, 2, 3, 4, 5, 6, 0, 0}, upperRow = {7, 8, 9, 10, 11, 12, 0, 0};
    Bytes content = lowerRow;
    append(content, upperRow);
    append(content, {0x40, 0, 0, 0, 0x80, 0, 0, 0});
    EXPECT_EQ(samplesOf(iconOf({pictureOf(2, 2, 24, content)})),
              (Samples{9, 8, 7, 0, 12, 11, 10, 255, 3, 2, 1, 255, 6, 5, 4, 0}));
}

TEST(ICODecoder, indicesBecomeColors) {
    Bytes content = {10, 20, 30, 0, 40, 50, 60, 0};
    append(content, {0x40, 0, 0, 0, 0x80, 0, 0, 0});
    EXPECT_EQ(samplesOf(iconOf({pictureOf(2, 1, 1, content)})), (Samples{30, 20, 10, 0, 60, 50, 40, 255}));
}

TEST(ICODecoder, theFourthByteIsAlphaUnlessItIs0Everywhere) {
    EXPECT_EQ(samplesOf(iconOf({onePixel(77, 0x80)})), (Samples{3, 2, 1, 77}));
    EXPECT_EQ(samplesOf(iconOf({onePixel(0, 0x80)})), (Samples{3, 2, 1, 0}));
    EXPECT_EQ(samplesOf(iconOf({onePixel(0, 0)})), (Samples{3, 2, 1, 255}));
}

TEST(ICODecoder, aPictureWithoutMaskIsOpaque) {
    EXPECT_EQ(samplesOf(iconOf({pictureOf(1, 1, 24, {1, 2, 3, 0})})), (Samples{3, 2, 1, 255}));
}

TEST(ICODecoder, theLargestPictureIsShown) {
    const auto plain = [](unsigned width, std::uint8_t gray) {
        return pictureOf(width, 1, 24, Bytes(4 * ((3 * width + 3) / 4), gray));
    };
    EXPECT_EQ(samplesOf(iconOf({plain(1, 1), plain(2, 2), plain(1, 3)})),
              (Samples{2, 2, 2, 255, 2, 2, 2, 255}));
    EXPECT_EQ(samplesOf(iconOf({plain(1, 1), onePixel(9, 0), plain(1, 3)})), (Samples{3, 2, 1, 9}))
        << "the most bits";
    EXPECT_EQ(samplesOf(iconOf({plain(1, 1), plain(1, 2)})), (Samples{1, 1, 1, 255})) << "the first";
}

TEST(ICODecoder, aPictureMayBeAPNG) {
    const PixelBuffer photo = makePhoto({300, 200, ColorModel::rgb, true, SampleDepth::bits8});
    const Bytes png = encodeSound(png::encode, photo, {.resolution = {150, 150}});
    const Decoded decoded = decodeSound(ico::codec, iconOf({onePixel(9, 0), png}));
    EXPECT_TRUE(samePicture(decoded.pixels, photo));
    EXPECT_NEAR(decoded.frame().resolution.horizontal, 150, 0.1);
}

TEST(ICODecoder, cursorsAreRead) {
    EXPECT_EQ(samplesOf(iconOf({onePixel(77, 0)}, 2)), (Samples{3, 2, 1, 77}));
}

TEST(ICODecoder, onlyIconsAreRecognised) {
    const Bytes icon = iconOf({onePixel(1, 0)});
    const auto recognises = [&](std::size_t position, std::uint8_t value) {
        Bytes changed = icon;
        changed[position] = value;
        return ico::codec.recognises(changed);
    };
    EXPECT_TRUE(recognises(0, 0));
    EXPECT_FALSE(recognises(0, 1));
    EXPECT_FALSE(recognises(2, 0)) << "an unknown type";
    EXPECT_FALSE(recognises(2, 3)) << "an unknown type";
    EXPECT_FALSE(recognises(4, 0)) << "no pictures";
    EXPECT_FALSE(recognises(4, 2)) << "a picture inside the directory";
    EXPECT_FALSE(recognises(14, 0)) << "a picture without bytes";
    EXPECT_FALSE(ico::codec.recognises(ByteView(icon).first(21)));
}

TEST(ICODecoder, cutOffFilesAreRefused) {
    constexpr std::size_t padding = 3; // after the last byte of the mask
    for (const Bytes& sound :
         {iconOf({onePixel(0, 0)}), iconOf({onePixel(9, 0), pictureOf(2, 1, 24, Bytes(12))})})
        for (std::size_t length = 22; length < sound.size() - padding; ++length)
            EXPECT_EQ(reasonOf(Bytes(sound.begin(), sound.begin() + length)), Reason::truncated) << length;
}

TEST(ICODecoder, damagedPicturesAreRefused) {
    EXPECT_EQ(reasonOf(iconOf({pictureOf(0, 1, 24, Bytes(12))})), Reason::empty);
    EXPECT_EQ(reasonOf(iconOf({pictureOf(60000, 60000, 24, Bytes(12))})), Reason::tooLarge);
    EXPECT_EQ(reasonOf(iconOf({pictureOf(2, 1, 7, Bytes(12))})), Reason::unsupported);
    Bytes runLength = pictureOf(2, 1, 8, Bytes(2000));
    runLength[16] = 1;
    EXPECT_EQ(reasonOf(iconOf({runLength})), Reason::unsupported);
    Bytes inside = iconOf({onePixel(9, 0), pictureOf(2, 1, 24, Bytes(12))});
    inside[34] = 0;
    inside[30] = 200;
    EXPECT_FALSE(decode(ico::codec, inside).ok()) << "the second picture begins in the directory";
}

} // namespace kestrine::testing
