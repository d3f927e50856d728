#include "tests/platform/imageio/Decoded.h"
#include "tests/support/Pictures.h"

#include "platform/imageio/webp/Library.h"

#include <algorithm>
#include <webp/decode.h>
#include <webp/encode.h>
#include <webp/mux.h>

namespace kestrine::testing {

namespace {

Bytes takeOver(std::uint8_t* bytes, std::size_t size) {
    Bytes file(bytes, bytes + size);
    WebPFree(bytes);
    return file;
}

Bytes lossless(const PixelBuffer& picture) {
    const RowFormat& f = picture.format;
    const auto encode = f.hasAlpha ? WebPEncodeLosslessRGBA : WebPEncodeLosslessRGB;
    std::uint8_t* out = nullptr;
    const std::size_t size = encode(picture.bytes.data(), static_cast<int>(f.width),
                                    static_cast<int>(f.height), static_cast<int>(f.bytesPerRow()), &out);
    return takeOver(out, size);
}

Bytes lossy(const PixelBuffer& picture) {
    const RowFormat& f = picture.format;
    const auto encode = f.hasAlpha ? WebPEncodeRGBA : WebPEncodeRGB;
    std::uint8_t* out = nullptr;
    const std::size_t size = encode(picture.bytes.data(), static_cast<int>(f.width),
                                    static_cast<int>(f.height), static_cast<int>(f.bytesPerRow()), 95, &out);
    return takeOver(out, size);
}

WebPData dataOf(const Bytes& bytes) { return {bytes.data(), bytes.size()}; }

/// `file` with chunks added.
Bytes withChunks(const Bytes& file, std::initializer_list<std::pair<const char*, Bytes>> chunks) {
    const WebPData picture = dataOf(file);
    WebPMux* mux = WebPMuxCreate(&picture, 1);
    for (const auto& [name, content] : chunks) {
        const WebPData data = dataOf(content);
        WebPMuxSetChunk(mux, name, &data, 1);
    }
    WebPData out{};
    WebPMuxAssemble(mux, &out);
    WebPMuxDelete(mux);
    return takeOver(const_cast<std::uint8_t*>(out.bytes), out.size);
}

struct AnimationFrame {
    Bytes picture;
    int x, y;
};

Bytes animation(int width, int height, const std::vector<AnimationFrame>& frames) {
    WebPMux* mux = WebPMuxNew();
    for (const AnimationFrame& frame : frames) {
        WebPMuxFrameInfo info{};
        info.bitstream = dataOf(frame.picture);
        info.x_offset = frame.x;
        info.y_offset = frame.y;
        info.duration = 100;
        info.id = WEBP_CHUNK_ANMF;
        WebPMuxPushFrame(mux, &info, 1);
    }
    const WebPMuxAnimParams parameters{0xFF00FF00, 0};
    WebPMuxSetAnimationParams(mux, &parameters);
    WebPMuxSetCanvasSize(mux, width, height);
    WebPData out{};
    WebPMuxAssemble(mux, &out);
    WebPMuxDelete(mux);
    return takeOver(const_cast<std::uint8_t*>(out.bytes), out.size);
}

/// IFD0 with XResolution and YResolution 300, and an EXIF directory that marks Adobe RGB.
const Bytes exifBlock = {'M',  'M',  0,    42, 0, 0, 0, 8,  0, 3,        //
                         0x01, 0x1A, 0,    5,  0, 0, 0, 1,  0, 0, 0, 50, //
                         0x01, 0x1B, 0,    5,  0, 0, 0, 1,  0, 0, 0, 50, //
                         0x87, 0x69, 0,    4,  0, 0, 0, 1,  0, 0, 0, 58, //
                         0,    0,    0,    0,  0, 0, 1, 44, 0, 0, 0, 1,  //
                         0,    1,    0xA0, 1,  0, 3, 0, 0,  0, 1, 0, 2,  0, 0, 0, 0, 0, 0};

const RowFormat rgb{33, 21}, rgba{33, 21, ColorModel::rgb, true};

} // namespace

TEST(WebPDecoder, losslessPicturesAreDecodedExactly) {
    for (const RowFormat& format : {rgb, rgba, RowFormat{1, 1}, RowFormat{1, 300}}) {
        const PixelBuffer picture = makePhoto(format);
        EXPECT_TRUE(samePicture(decodeSound(webp::codec, lossless(picture)).pixels, picture));
    }
}

TEST(WebPDecoder, lossyPicturesAreDecodedApproximately) {
    for (const bool hasAlpha : {false, true}) {
        const PixelBuffer picture =
            makePicture({64, 48, ColorModel::rgb, hasAlpha}, [](auto x, auto y, std::size_t c) {
                return static_cast<unsigned>(40 + x + 2 * y + 10 * c);
            });
        EXPECT_TRUE(samePicture(decodeSound(webp::codec, lossy(picture)).pixels, picture, 8));
    }
}

/// Each file is longer than many of the pieces in which it is decoded, and its rows than many large pages.
TEST(WebPDecoder, rowsThatAreDecodedInPiecesAreThoseOfTheWholePicture) {
    for (const bool hasAlpha : {false, true})
        for (const auto encoded : {lossy, lossless}) {
            const RowFormat format{1501, 1203, ColorModel::rgb, hasAlpha};
            const Bytes file = encoded(makePhoto(format));
            PixelBuffer whole(format);
            const auto decode = hasAlpha ? WebPDecodeRGBAInto : WebPDecodeRGBInto;
            ASSERT_NE(decode(file.data(), file.size(), whole.bytes.data(), whole.bytes.size(),
                             static_cast<int>(format.bytesPerRow())),
                      nullptr);
            EXPECT_TRUE(samePicture(decodeSound(webp::codec, file).pixels, whole));
        }
}

TEST(WebPDecoder, onlyWhatTheLibraryHoldsCountsAsHeld) {
    constexpr std::uint64_t pixels = 33 * 21;
    const auto heldBy = [](const Bytes& file) { return decodeSound(webp::codec, file).frame().heldBytes; };
    EXPECT_EQ(heldBy(lossy(makePhoto(rgb))), 0u);
    EXPECT_EQ(heldBy(lossy(makePhoto(rgba))), pixels);
    EXPECT_EQ(heldBy(lossless(makePhoto(rgb))), 4 * pixels);
    EXPECT_EQ(heldBy(animation(33, 22, {{lossless(makePhoto(rgb)), 0, 0}})), 8 * std::uint64_t{33 * 22});
}

TEST(WebPDecoder, anEmbeddedProfileIsRead) {
    const ColorProfile profile = ColorProfile::adobeRGB();
    const Bytes file = lossless(makePhoto(rgb));
    const Bytes icc(profile.bytes().begin(), profile.bytes().end());
    EXPECT_EQ(decodeSound(webp::codec, withChunks(file, {{"ICCP", icc}})).frame().profile, profile);
    EXPECT_FALSE(
        decodeSound(webp::codec, withChunks(file, {{"ICCP", Bytes(200, 1)}})).frame().profile.has_value());
    EXPECT_FALSE(decodeSound(webp::codec, file).frame().profile.has_value());
}

TEST(WebPDecoder, exifIsReadAndDefinesResolutionAndProfile) {
    const Decoded decoded =
        decodeSound(webp::codec, withChunks(lossless(makePhoto(rgb)), {{"EXIF", exifBlock}}));
    EXPECT_EQ(decoded.exif, exifBlock);
    EXPECT_EQ(decoded.frame().resolution, (Resolution{300, 300}));
    EXPECT_EQ(decoded.frame().profile, ColorProfile::adobeRGB());
    EXPECT_EQ(decodeSound(webp::codec, lossless(makePhoto(rgb))).frame().resolution, Resolution{});
}

TEST(WebPDecoder, theSignatureOfAJPEGSegmentBeforeExifIsRemoved) {
    Bytes marked = {'E', 'x', 'i', 'f', 0, 0};
    marked.insert(marked.end(), exifBlock.begin(), exifBlock.end());
    EXPECT_EQ(decodeSound(webp::codec, withChunks(lossless(makePhoto(rgb)), {{"EXIF", marked}})).exif,
              exifBlock);
}

TEST(WebPDecoder, theFirstFrameOfAnAnimationIsDecoded) {
    const PixelBuffer first = makePhoto(rgb);
    const PixelBuffer second = makePicture(rgb, [](auto, auto, std::size_t) { return 9u; });
    const Decoded decoded =
        decodeSound(webp::codec, animation(33, 21, {{lossless(first), 0, 0}, {lossless(second), 0, 0}}));
    EXPECT_EQ(decoded.contents, (FileContents{FileContents::Kind::animation, 2}));
    EXPECT_EQ(decoded.frames.size(), 1u);
    EXPECT_TRUE(samePicture(decoded.pixels, first));
}

TEST(WebPDecoder, aSmallFirstFrameIsPlacedOnATransparentCanvas) {
    const PixelBuffer small =
        makePicture({4, 3}, [](auto x, auto y, std::size_t c) { return 50 + x + 10 * y + 60 * c; });
    const Decoded decoded =
        decodeSound(webp::codec, animation(10, 8, {{lossless(small), 2, 4}, {lossless(small), 0, 0}}));
    const PixelBuffer expected =
        makePicture({10, 8, ColorModel::rgb, true}, [&](auto x, auto y, std::size_t c) {
            const bool isInside = x >= 2 && x < 6 && y >= 4 && y < 7;
            return !isInside ? 0 : c == 3 ? 255 : sampleAt(small, x - 2, y - 4, c);
        });
    EXPECT_TRUE(samePicture(decoded.pixels, expected));
}

TEST(WebPDecoder, aFileCutOffAnywhereIsRefused) {
    for (const Bytes& file :
         {lossless(makePhoto(rgb)), lossy(makePhoto(rgba)),
          animation(33, 21, {{lossless(makePhoto(rgb)), 0, 0}, {lossy(makePhoto(rgb)), 0, 0}})})
        for (std::size_t length = 0; length < file.size(); ++length)
            EXPECT_TRUE(failsToDecode(
                webp::codec, Bytes(file.begin(), file.begin() + static_cast<std::ptrdiff_t>(length))))
                << length << " of " << file.size() << " bytes";
}

TEST(WebPDecoder, damagedPixelsAreRefused) {
    Bytes file = lossless(makePhoto(rgb));
    std::fill(file.begin() + 30, file.begin() + 60, std::uint8_t{0xFF});
    EXPECT_TRUE(failsToDecode(webp::codec, file));
}

TEST(WebPDecoder, onlyWebPHeadersAreRecognised) {
    const Bytes file = lossless(makePhoto(rgb));
    EXPECT_TRUE(webp::codec.recognises(ByteView(file).first(12)));
    EXPECT_FALSE(webp::codec.recognises(ByteView(file).first(11)));
    const Bytes sound = {'R', 'I', 'F', 'F', 4, 0, 0, 0, 'W', 'A', 'V', 'E'};
    EXPECT_FALSE(webp::codec.recognises(sound));
}

TEST(WebPDecoder, rowsCanBeReadAgainAndOutliveTheDecoder) {
    auto decoder = webp::codec.open(readerOfBytes(lossless(makePhoto(rgba))));
    ASSERT_TRUE(decoder.ok());
    auto first = (*decoder)->rows(0, 0), second = (*decoder)->rows(0, 0);
    ASSERT_TRUE(first.ok() && second.ok());
    decoder->reset();
    EXPECT_TRUE(samePicture(*readAllRows(**first), *readAllRows(**second)));
}

TEST(WebPDecoder, aMissingLibraryIsReportedWithItsPackage) {
    for (const Result<webp::Functions>& functions :
         {webp::loadFunctions({"libwebp.so.0"}, {"libwebpdemux.so.2"}),
          webp::loadFunctions({"libwebp.so.7"}, {"libm.so.6"})}) {
        ASSERT_FALSE(functions.ok());
        EXPECT_EQ(functions.failure().reason, Reason::unsupported);
        EXPECT_NE(functions.failure().text.find("libwebp7"), std::string::npos);
    }
}

} // namespace kestrine::testing
