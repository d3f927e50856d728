#include "platform/host/BigEndian.h"
#include "tests/platform/imageio/Decoded.h"
#include "tests/platform/imageio/jp2/JP2Recipe.h"
#include "tests/support/Pictures.h"

namespace kestrine::testing {

namespace {

struct Element {
    std::string name;
    Bytes content;
};

Bytes iconOf(const std::vector<Element>& elements) {
    Bytes body;
    for (const auto& [name, content] : elements) {
        body.insert(body.end(), name.begin(), name.end());
        appendBigEndian(body, content.size() + 8, 4);
        body.insert(body.end(), content.begin(), content.end());
    }
    Bytes file = {'i', 'c', 'n', 's'};
    appendBigEndian(file, body.size() + 8, 4);
    file.insert(file.end(), body.begin(), body.end());
    return file;
}

PixelBuffer pictureOf(const std::vector<Element>& elements) {
    return decodeSound(icns::codec, iconOf(elements)).pixels;
}

Reason reasonOf(const Bytes& file) { return decode(icns::codec, file).failure().reason; }

using Color = std::vector<unsigned>;

Color colorAt(const PixelBuffer& picture, std::size_t pixel) {
    const auto* const samples = &picture.bytes[4 * pixel];
    return {samples[0], samples[1], samples[2], samples[3]};
}

/// Codes for a plane of `count` equal samples; `count` is a multiple of 128.
Bytes plane(std::size_t count, std::uint8_t value) {
    Bytes codes;
    for (; count > 0; count -= 128)
        codes.insert(codes.end(), {125 + 128, value});
    return codes;
}

Bytes planes(std::size_t count, const Bytes& values) {
    Bytes codes;
    for (const std::uint8_t value : values) {
        const Bytes more = plane(count, value);
        codes.insert(codes.end(), more.begin(), more.end());
    }
    return codes;
}

Bytes pngOf(std::uint32_t side) {
    return encodeSound(png::encode, makePhoto({side, side, ColorModel::rgb, true, SampleDepth::bits8}));
}

} // namespace

TEST(ICNSDecoder, planesOfColorsAreRead) {
    const PixelBuffer picture = pictureOf({{"is32", planes(256, {10, 20, 30})}});
    EXPECT_EQ(picture.format, (RowFormat{16, 16, ColorModel::rgb, true}));
    EXPECT_EQ(colorAt(picture, 255), (Color{10, 20, 30, 255}));
}

TEST(ICNSDecoder, codesMayStandForSingleSamples) {
    Bytes codes = {1, 5, 6, 0x80, 7}; // two samples, three equal ones
    for (std::size_t left = 256 - 5; left > 0;) {
        const std::size_t run = std::min<std::size_t>(left, 130);
        codes.insert(codes.end(), {static_cast<std::uint8_t>(run + 125), 9});
        left -= run;
    }
    const Bytes others = planes(256, {0, 0});
    codes.insert(codes.end(), others.begin(), others.end());
    const PixelBuffer picture = pictureOf({{"is32", codes}});
    const unsigned expected[] = {5, 6, 7, 7, 7, 9};
    for (std::size_t i = 0; i < 6; ++i)
        EXPECT_EQ(colorAt(picture, i)[0], expected[i]) << i;
}

TEST(ICNSDecoder, colorsMayBePlain) {
    Bytes content(768);
    content[3] = 1;
    content[4] = 2;
    content[5] = 3;
    EXPECT_EQ(colorAt(pictureOf({{"is32", content}}), 1), (Color{1, 2, 3, 255}));
}

TEST(ICNSDecoder, theLargeColorsBeginAfterFourBytes) {
    Bytes content = {0, 0, 0, 0};
    const Bytes codes = planes(128 * 128, {1, 2, 3});
    content.insert(content.end(), codes.begin(), codes.end());
    EXPECT_EQ(colorAt(pictureOf({{"it32", content}}), 16383), (Color{1, 2, 3, 255}));
}

TEST(ICNSDecoder, theMaskOfTheSameSizeIsAlpha) {
    const std::vector<Element> elements = {{"l8mk", Bytes(1024, 9)},
                                           {"s8mk", Bytes(256, 77)},
                                           {"ics#", Bytes(64)},
                                           {"is32", planes(256, {1, 2, 3})}};
    EXPECT_EQ(colorAt(pictureOf(elements), 100), (Color{1, 2, 3, 77}));
}

TEST(ICNSDecoder, bitsMayBeTheMask) {
    Bytes bitsAndMask(64);
    bitsAndMask[32] = 0x40;
    const PixelBuffer picture = pictureOf({{"ics#", bitsAndMask}, {"ics8", Bytes(256, 0)}});
    EXPECT_EQ(colorAt(picture, 0), (Color{255, 255, 255, 0}));
    EXPECT_EQ(colorAt(picture, 1), (Color{255, 255, 255, 255}));
}

TEST(ICNSDecoder, indicesOf8BitsUseTheSystemColors) {
    Bytes indices(256);
    for (std::size_t i = 0; i < 256; ++i)
        indices[i] = static_cast<std::uint8_t>(i);
    const PixelBuffer picture = pictureOf({{"ics8", indices}});
    const std::pair<std::size_t, Color> expected[] = {
        {0, {255, 255, 255, 255}},   {1, {255, 255, 204, 255}}, {6, {255, 204, 255, 255}},
        {36, {204, 255, 255, 255}},  {214, {0, 0, 51, 255}},    {215, {238, 0, 0, 255}},
        {224, {17, 0, 0, 255}},      {225, {0, 238, 0, 255}},   {235, {0, 0, 238, 255}},
        {245, {238, 238, 238, 255}}, {254, {17, 17, 17, 255}},  {255, {0, 0, 0, 255}}};
    for (const auto& [index, color] : expected)
        EXPECT_EQ(colorAt(picture, index), color) << index;
}

TEST(ICNSDecoder, indicesOf4BitsUseTheSystemColors) {
    Bytes indices(96);
    indices[0] = 0x3F;
    const PixelBuffer picture = pictureOf({{"icm4", indices}});
    EXPECT_EQ(picture.format.height, 12u);
    EXPECT_EQ(colorAt(picture, 0), (Color{0xDD, 0x08, 0x06, 255}));
    EXPECT_EQ(colorAt(picture, 1), (Color{0, 0, 0, 255}));
    EXPECT_EQ(colorAt(picture, 2), (Color{255, 255, 255, 255}));
}

TEST(ICNSDecoder, aSetBitIsBlack) {
    Bytes bits(128);
    bits[0] = 0x80;
    const PixelBuffer picture = pictureOf({{"ICON", bits}});
    EXPECT_EQ(colorAt(picture, 0), (Color{0, 0, 0, 255}));
    EXPECT_EQ(colorAt(picture, 1), (Color{255, 255, 255, 255}));
}

TEST(ICNSDecoder, alphaMayBeThePlaneBeforeTheColors) {
    Bytes content = {'A', 'R', 'G', 'B'};
    const Bytes codes = planes(256, {50, 1, 2, 3});
    content.insert(content.end(), codes.begin(), codes.end());
    EXPECT_EQ(colorAt(pictureOf({{"s8mk", Bytes(256, 9)}, {"ic04", content}}), 9), (Color{1, 2, 3, 50}));
}

TEST(ICNSDecoder, theLargestPictureIsShown) {
    EXPECT_EQ(
        pictureOf({{"ic07", pngOf(40)}, {"ic08", pngOf(30)}, {"is32", planes(256, {1, 2, 3})}}).format.width,
        40u);
    EXPECT_EQ(pictureOf({{"ic07", pngOf(10)}, {"is32", planes(256, {1, 2, 3})}}).format.width, 16u);
    EXPECT_EQ(
        colorAt(
            pictureOf({{"ics8", Bytes(256, 255)}, {"is32", planes(256, {1, 2, 3})}, {"ics4", Bytes(128)}}),
            0),
        (Color{1, 2, 3, 255}))
        << "the most colours";
}

TEST(ICNSDecoder, aPictureMayBeJPEG2000) {
    const PixelBuffer photo = makePhoto({64, 64, ColorModel::rgb, true, SampleDepth::bits8});
    const Element small{"is32", planes(256, {1, 2, 3})};
    for (const bool isBare : {false, true})
        EXPECT_TRUE(samePicture(
            pictureOf({small, {"icp6", JP2Recipe{.pixels = photo, .isBare = isBare}.make()}}), photo));
    Bytes damaged = JP2Recipe{.pixels = photo, .isBare = true}.make();
    damaged.resize(30);
    EXPECT_FALSE(decode(icns::codec, iconOf({small, {"icp6", damaged}})).ok());
}

TEST(ICNSDecoder, unknownElementsAreSkipped) {
    EXPECT_EQ(
        pictureOf({{"TOC ", Bytes(8)}, {"is32", planes(256, {1, 2, 3})}, {"info", Bytes(3)}}).format.width,
        16u);
    EXPECT_EQ(reasonOf(iconOf({{"TOC ", Bytes(8)}, {"s8mk", Bytes(256)}})), Reason::unsupported);
}

TEST(ICNSDecoder, elementsThatAreTooShortAreRefused) {
    for (const Element& element :
         {Element{"is32", {0x80}}, Element{"is32", {5, 1, 2}}, Element{"is32", planes(256, {1, 2})},
          Element{"it32", {0, 0, 0, 0}}, Element{"ics8", Bytes(255)}, Element{"ics4", Bytes(127)},
          Element{"ics#", Bytes(31)}, Element{"ic04", {'A', 'R', 'G', 'B'}}})
        EXPECT_EQ(reasonOf(iconOf({element})), Reason::truncated) << element.name;
    EXPECT_EQ(reasonOf(iconOf({{"ics8", Bytes(256)}, {"s8mk", Bytes(255)}})), Reason::truncated);
    EXPECT_EQ(reasonOf(iconOf({{"ics8", Bytes(256)}, {"ics#", Bytes(63)}})), Reason::truncated);
}

TEST(ICNSDecoder, cutOffFilesAreRefused) {
    const Bytes sound = iconOf({{"is32", planes(256, {1, 2, 3})}, {"ics8", Bytes(256)}});
    for (std::size_t length = 8; length < sound.size(); ++length)
        EXPECT_EQ(reasonOf(Bytes(sound.begin(), sound.begin() + length)), Reason::truncated) << length;
    EXPECT_FALSE(icns::codec.recognises(ByteView(sound).first(7)));
}

} // namespace kestrine::testing
