#include "tests/platform/imageio/Decoded.h"
#include "tests/platform/imageio/gif/GIFFile.h"
#include "tests/support/Pictures.h"

namespace kestrine::testing {

namespace {

/// The expected pixels of a file made by `recipe`: transparent outside the picture.
PixelBuffer expectedPicture(const GIFFile& recipe, std::uint32_t width, std::uint32_t height, bool hasAlpha) {
    const auto& colors = recipe.pictureColors.empty() ? recipe.screenColors : recipe.pictureColors;
    const RowFormat format = {width, height, ColorModel::rgb, hasAlpha};
    return makePicture(format, [&](std::uint32_t column, std::uint32_t row, std::size_t channel) -> unsigned {
        const int x = static_cast<int>(column) - recipe.left, y = static_cast<int>(row) - recipe.top;
        if (x < 0 || y < 0 || x >= recipe.width || y >= recipe.height)
            return 0;
        const int index = recipe.index(x, y);
        if (index == recipe.transparent)
            return 0;
        const GifColorType color = colors[static_cast<std::size_t>(index)];
        return channel == 0 ? color.Red : channel == 1 ? color.Green : channel == 2 ? color.Blue : 255;
    });
}

/// Offset of the first image descriptor if only four colours precede it.
constexpr std::size_t descriptor = 13 + 4 * 3;

Bytes bytesOfColors(const std::vector<GifColorType>& colors) {
    Bytes bytes;
    for (const GifColorType& color : colors)
        bytes.insert(bytes.end(), {color.Red, color.Green, color.Blue});
    return bytes;
}

} // namespace

TEST(GIFDecoder, aPictureThatFillsItsScreenIsRGB) {
    const GIFFile recipe;
    const Decoded decoded = decodeSound(gif::codec, recipe.make());
    EXPECT_TRUE(samePicture(decoded.pixels, expectedPicture(recipe, 4, 3, false)));
    EXPECT_EQ(decoded.frames.size(), 1u);
    EXPECT_EQ(decoded.frame().format, decoded.pixels.format);
    EXPECT_EQ(decoded.frame().resolution, Resolution{});
    EXPECT_FALSE(decoded.frame().profile.has_value());
}

TEST(GIFDecoder, aTransparentIndexBecomesAlpha) {
    const GIFFile recipe{.transparent = 2};
    EXPECT_TRUE(
        samePicture(decodeSound(gif::codec, recipe.make()).pixels, expectedPicture(recipe, 4, 3, true)));
}

TEST(GIFDecoder, theLastTransparentIndexBeforeThePictureCounts) {
    GIFFile recipe{.transparent = 1};
    recipe.before = [](GifFileType* file) { addTransparency(file, 3); };
    EXPECT_TRUE(
        samePicture(decodeSound(gif::codec, recipe.make()).pixels, expectedPicture(recipe, 4, 3, true)));
}

TEST(GIFDecoder, aLaterExtensionWithoutATransparentIndexMakesThePictureOpaque) {
    GIFFile recipe;
    recipe.before = [](GifFileType* file) {
        addTransparency(file, 3);
        addTransparency(file, NO_TRANSPARENT_COLOR);
    };
    EXPECT_TRUE(
        samePicture(decodeSound(gif::codec, recipe.make()).pixels, expectedPicture(recipe, 4, 3, false)));
}

TEST(GIFDecoder, otherExtensionsAreSkipped) {
    GIFFile recipe;
    recipe.before = [](GifFileType* file) {
        EGifPutComment(file, std::string(600, 'c').c_str());
        EGifPutExtension(file, APPLICATION_EXT_FUNC_CODE, 11, "NETSCAPE2.0");
    };
    EXPECT_TRUE(
        samePicture(decodeSound(gif::codec, recipe.make()).pixels, expectedPicture(recipe, 4, 3, false)));
}

TEST(GIFDecoder, theScreenIsTransparentOutsideThePicture) {
    const GIFFile recipe{.screenWidth = 9, .screenHeight = 7, .left = 2, .top = 1};
    EXPECT_TRUE(
        samePicture(decodeSound(gif::codec, recipe.make()).pixels, expectedPicture(recipe, 9, 7, true)));
}

TEST(GIFDecoder, aScreenTooSmallForItsPictureIsEnlarged) {
    const GIFFile larger{.screenWidth = 2, .screenHeight = 1};
    EXPECT_TRUE(
        samePicture(decodeSound(gif::codec, larger.make()).pixels, expectedPicture(larger, 4, 3, false)));
    const GIFFile beyond{.left = 3, .top = 2};
    EXPECT_TRUE(
        samePicture(decodeSound(gif::codec, beyond.make()).pixels, expectedPicture(beyond, 7, 5, true)));
}

TEST(GIFDecoder, aScreenWithoutSizeIsAsLargeAsThePicture) {
    GIFFile recipe{.screenWidth = 0, .screenHeight = 0, .left = 5, .top = 6};
    const Bytes file = recipe.make();
    recipe.left = recipe.top = 0;
    EXPECT_TRUE(samePicture(decodeSound(gif::codec, file).pixels, expectedPicture(recipe, 4, 3, false)));
}

TEST(GIFDecoder, interlacedRowsAreDeliveredFromTheTop) {
    for (int height = 1; height <= 18; ++height) {
        GIFFile recipe{
            .screenWidth = 3, .screenHeight = height, .width = 3, .height = height, .interlaced = true};
        recipe.index = [](int x, int y) { return (x + y * y) % 4; };
        EXPECT_TRUE(samePicture(decodeSound(gif::codec, recipe.make()).pixels,
                                expectedPicture(recipe, 3, static_cast<std::uint32_t>(height), false)));
    }
}

TEST(GIFDecoder, interlacedRowsOfALargePictureAreDeliveredFromTheTop) {
    GIFFile recipe{
        .screenWidth = 1000, .screenHeight = 4300, .width = 1000, .height = 4300, .interlaced = true};
    recipe.index = [](int x, int y) { return (x / 100 + y * y) % 4; };
    const Bytes interlaced = decodeSound(gif::codec, recipe.make()).pixels.bytes;
    recipe.interlaced = false;
    EXPECT_TRUE(decodeSound(gif::codec, recipe.make()).pixels.bytes == interlaced);
}

TEST(GIFDecoder, thePicturesOwnColorsReplaceTheScreens) {
    const GIFFile recipe{.pictureColors = {{1, 2, 3}, {4, 5, 6}, {7, 8, 9}, {10, 11, 12}}};
    const Decoded decoded = decodeSound(gif::codec, recipe.make());
    EXPECT_TRUE(samePicture(decoded.pixels, expectedPicture(recipe, 4, 3, false)));
    EXPECT_EQ(decoded.colorTable, bytesOfColors(recipe.pictureColors));
}

TEST(GIFDecoder, theColorTableIsThatOfTheScreenByDefault) {
    const GIFFile recipe;
    EXPECT_EQ(decodeSound(gif::codec, recipe.make()).colorTable, bytesOfColors(recipe.screenColors));
}

TEST(GIFDecoder, everyNumberOfColorsIsRead) {
    for (int count = 2; count <= 256; count *= 2) {
        GIFFile recipe{.screenWidth = 64, .screenHeight = 48, .width = 64, .height = 48};
        recipe.screenColors.clear();
        for (int i = 0; i < count; ++i)
            recipe.screenColors.push_back(
                {static_cast<GifByteType>(i), static_cast<GifByteType>(255 - i), 7});
        recipe.index = [count](int x, int y) { return (x * y + 3 * x) % count; };
        EXPECT_TRUE(samePicture(decodeSound(gif::codec, recipe.make()).pixels,
                                expectedPicture(recipe, 64, 48, false)));
    }
}

TEST(GIFDecoder, anIndexBeyondTheColorsIsBlack) {
    Bytes file = GIFFile{}.make();
    const auto half = file.begin() + 13 + 6;
    file[10] = static_cast<std::uint8_t>((file[10] & ~7) | 0); // two colours instead of four
    file.erase(half, half + 6);
    const Decoded decoded = decodeSound(gif::codec, file);
    EXPECT_EQ(decoded.colorTable.size(), 6u);
    EXPECT_EQ(sampleAt(decoded.pixels, 1, 0, 0), 40u);
    for (std::size_t channel = 0; channel < 3; ++channel)
        EXPECT_EQ(sampleAt(decoded.pixels, 2, 0, channel), 0u);
}

TEST(GIFDecoder, onlyTheFirstPictureIsDecoded) {
    GIFFile recipe;
    recipe.after = [](GifFileType* file) {
        GifPixelType row[4] = {3, 3, 3, 3};
        EGifPutImageDesc(file, 0, 0, 4, 1, false, nullptr);
        EGifPutLine(file, row, 4);
    };
    const Decoded decoded = decodeSound(gif::codec, recipe.make());
    EXPECT_TRUE(samePicture(decoded.pixels, expectedPicture(recipe, 4, 3, false)));
    EXPECT_EQ(decoded.frames.size(), 1u);
}

TEST(GIFDecoder, rowsCanBeReadAgainAndOutliveTheDecoder) {
    const GIFFile recipe{.interlaced = true, .transparent = 0};
    Result<std::unique_ptr<ImageDecoder>> decoder = gif::codec.open(readerOfBytes(recipe.make()));
    ASSERT_TRUE(decoder.ok());
    Result<RowSourcePointer> first = (*decoder)->rows(0, 0), second = (*decoder)->rows(0, 0);
    ASSERT_TRUE(first.ok() && second.ok());
    decoder->reset();
    const PixelBuffer picture = *readAllRows(**first);
    EXPECT_TRUE(samePicture(picture, expectedPicture(recipe, 4, 3, true)));
    EXPECT_TRUE(samePicture(*readAllRows(**second), picture));
}

TEST(GIFDecoder, aFileCutOffInItsPictureIsRefusedOrItsDamageIsReported) {
    for (const bool interlaced : {false, true}) {
        const GIFFile recipe{.screenWidth = 40,
                             .screenHeight = 30,
                             .width = 40,
                             .height = 30,
                             .interlaced = interlaced,
                             .transparent = 1};
        const Bytes file = recipe.make();
        for (std::size_t length = 0; length + 2 < file.size(); ++length)
            EXPECT_TRUE(isRefusedOrDamaged(
                gif::codec, Bytes(file.begin(), file.begin() + static_cast<std::ptrdiff_t>(length))))
                << length << " of " << file.size();
    }
}

TEST(GIFDecoder, rowsAfterTheEndOfTheFileAreClear) {
    GIFFile recipe{.screenWidth = 200, .screenHeight = 150, .width = 200, .height = 150, .transparent = 1};
    recipe.index = [](int x, int y) { return (x * x + y * y * y + x * y) % 7 % 4; };
    Bytes file = recipe.make();
    const PixelBuffer whole = decodeSound(gif::codec, file).pixels;
    file.resize(file.size() / 2);
    const auto decoder = *gif::codec.open(readerOfBytes(file));
    const PixelBuffer decoded = *readAllRows(**decoder->rows(0, 0));
    EXPECT_TRUE(std::ranges::equal(decoded.row(9), whole.row(9)));
    EXPECT_EQ(std::ranges::count(decoded.row(149), 0), 800);
    EXPECT_EQ(decoder->damage()->reason, Reason::truncated);
}

TEST(GIFDecoder, rowsThatAnInterlacedFileLacksAreThoseAbove) {
    GIFFile recipe{.screenWidth = 200, .screenHeight = 150, .width = 200, .height = 150, .interlaced = true};
    recipe.index = [](int x, int y) { return (x * x + y * y * y + x * y) % 7 % 4; };
    Bytes file = recipe.make();
    const PixelBuffer whole = decodeSound(gif::codec, file).pixels;
    file.resize(file.size() * 2 / 5);
    const auto decoder = *gif::codec.open(readerOfBytes(file));
    const PixelBuffer decoded = *readAllRows(**decoder->rows(0, 0));
    for (const int y : {0, 8, 144, 4, 12})
        EXPECT_TRUE(std::ranges::equal(decoded.row(y), whole.row(y))) << y;
    for (const int y : {1, 9, 145})
        EXPECT_TRUE(std::ranges::equal(decoded.row(y), whole.row(y - 1))) << y;
    EXPECT_EQ(decoder->damage()->reason, Reason::truncated);
}

TEST(GIFDecoder, withoutAColourTableIndicesAreGreys) {
    Bytes file =
        encodeSound(gif::encode, makePicture({.width = 4, .height = 1},
                                             [](unsigned x, unsigned, std::size_t) { return x * 60; }));
    const Bytes colors = (*gif::codec.open(readerOfBytes(file)))->colorTable().value();
    file[10] &= 0x7F; // no global colour table
    file.erase(file.begin() + 13, file.begin() + 13 + static_cast<std::ptrdiff_t>(colors.size()));
    const PixelBuffer decoded = decodeSound(gif::codec, file).pixels;
    for (std::size_t x = 0; x < 4; ++x)
        EXPECT_LT(decoded.bytes[3 * x], 4) << x; // the index itself
}

TEST(GIFDecoder, aMissingTrailerIsAccepted) {
    Bytes file = GIFFile{}.make();
    file.pop_back();
    EXPECT_FALSE(failsToDecode(gif::codec, file));
}

TEST(GIFDecoder, aFileWithoutPictureIsRefused) {
    const Bytes empty = {'G', 'I', 'F', '8', '9', 'a', 4, 0, 3, 0, 0, 0, 0, ';'};
    EXPECT_EQ(decode(gif::codec, empty).failure().reason, Reason::empty);
}

TEST(GIFDecoder, aPictureWithoutPixelsIsRefused) {
    for (const std::size_t side : {5u, 7u}) {
        Bytes file = GIFFile{}.make();
        file[descriptor + side] = file[descriptor + side + 1] = 0;
        EXPECT_EQ(decode(gif::codec, file).failure().reason, Reason::empty);
    }
}

TEST(GIFDecoder, tooManyPixelsAreRefused) {
    const GIFFile recipe{.screenWidth = 65535, .screenHeight = 65535};
    EXPECT_EQ(decode(gif::codec, recipe.make()).failure().reason, Reason::tooLarge);
}

TEST(GIFDecoder, aPictureThatTheFileCannotHoldIsRefusedAtOnce) {
    GIFFile recipe{.screenWidth = 30000, .screenHeight = 30000, .interlaced = true};
    Bytes file = recipe.make();
    const std::uint8_t size[4] = {30000 & 255, 30000 >> 8, 30000 & 255, 30000 >> 8};
    std::ranges::copy(size, file.begin() + static_cast<std::ptrdiff_t>(descriptor + 5));
    Result<std::unique_ptr<ImageDecoder>> decoder = gif::codec.open(readerOfBytes(file));
    ASSERT_TRUE(decoder.ok());
    EXPECT_EQ((*decoder)->rows(0, 0).failure().reason, Reason::truncated);
}

TEST(GIFDecoder, anInvalidCodeSizeIsRefused) {
    Bytes file = GIFFile{.screenWidth = 40, .screenHeight = 30, .width = 40, .height = 30}.make();
    file[descriptor + 10] = 13; // bits per index
    EXPECT_TRUE(failsToDecode(gif::codec, file));
}

TEST(GIFDecoder, onlyTheTwoVersionsOfGIFAreRecognised) {
    const auto recognises = [](std::string_view head) {
        return gif::codec.recognises(
            ByteView(reinterpret_cast<const std::uint8_t*>(head.data()), head.size()));
    };
    EXPECT_TRUE(recognises("GIF87a"));
    EXPECT_TRUE(recognises("GIF89a and more"));
    for (const char* other : {"", "GIF89", "GIF88a", "GIF89b", "gif89a", "\x89PNG\r\n"})
        EXPECT_FALSE(recognises(other)) << other;
}

TEST(GIFDecoder, anAnimationTellsHowManyFramesItHas) {
    EXPECT_EQ(decodeSound(gif::codec, GIFFile{}.make()).contents, FileContents{});
    GIFFile recipe;
    recipe.after = [](GifFileType* file) {
        for (int frame = 0; frame < 3; ++frame) {
            addTransparency(file, 1);
            GifPixelType row[] = {0, 1, 2};
            EGifPutImageDesc(file, 0, 0, 3, 1, false, nullptr);
            EGifPutLine(file, row, 3);
        }
    };
    const Bytes file = recipe.make();
    EXPECT_EQ(decodeSound(gif::codec, file).contents, (FileContents{FileContents::Kind::animation, 4}));
    const Bytes cutOff(file.begin(), file.end() - 4);
    EXPECT_EQ(decodeSound(gif::codec, cutOff).contents, (FileContents{FileContents::Kind::animation, 3}));
}

} // namespace kestrine::testing
