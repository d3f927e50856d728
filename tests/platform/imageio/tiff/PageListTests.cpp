// Which pages of a TIFF file are pictures, and which of them is the main one. The tests distinguish pages by
// width.
#include "tests/platform/imageio/Decoded.h"
#include "tests/platform/imageio/tiff/TIFFRecipe.h"

#include "platform/imageio/tiff/Decoder.h"

#include <algorithm>

namespace kestrine::testing {

namespace {

using Widths = std::vector<std::uint32_t>;

constexpr std::uint16_t colorFilterArray = 32803, linearRaw = 34892;

TIFFRecipe picture(std::uint32_t width) { return {.width = width, .height = width}; }

TIFFRecipe marked(std::uint32_t width, unsigned mark = FILETYPE_REDUCEDIMAGE) {
    TIFFRecipe page = picture(width);
    page.tags = [mark](TIFF* tiff) { TIFFSetField(tiff, TIFFTAG_SUBFILETYPE, mark); };
    return page;
}

TIFFRecipe sensor(std::uint32_t width, std::uint16_t photometric = colorFilterArray) {
    TIFFRecipe page = picture(width);
    page.bits = 16;
    page.samples = photometric == linearRaw ? 3 : 1;
    page.photometric = photometric;
    return page;
}

TIFFRecipe signedSamples(std::uint32_t width) {
    TIFFRecipe page = picture(width);
    page.tags = [](TIFF* tiff) { TIFFSetField(tiff, TIFFTAG_SAMPLEFORMAT, SAMPLEFORMAT_INT); };
    return page;
}

TIFFRecipe with(TIFFRecipe page, std::vector<TIFFRecipe> subPages) {
    page.subPages = std::move(subPages);
    return page;
}

/// `file` (little-endian) with the last entry of the tag `from` changed to the tag `to`.
Bytes retagged(Bytes file, std::uint16_t from, std::uint16_t to) {
    const auto bytes = [](std::uint16_t tag) {
        return Bytes{static_cast<std::uint8_t>(tag), static_cast<std::uint8_t>(tag >> 8)};
    };
    for (const std::uint8_t type : Bytes{3, 4}) {
        const Bytes entry = {bytes(from)[0], bytes(from)[1], type, 0, 1, 0, 0, 0};
        const auto found = std::ranges::find_end(file, entry);
        if (!found.empty()) {
            std::ranges::copy(bytes(to), found.begin());
            return file;
        }
    }
    ADD_FAILURE() << "no tag " << from;
    return file;
}

Widths widthsOf(const Bytes& file) {
    Widths widths;
    const auto decoder = tiff::openDevelopedPages(readerOfBytes(file));
    for (const FrameDescription& frame : (*decoder)->frames())
        widths.push_back(frame.format.width);
    return widths;
}

Widths widthsOf(const std::vector<TIFFRecipe>& pages) { return widthsOf(makeTIFF(pages)); }

/// Whether the file has only sensor data, and is left to another codec.
bool isRaw(const Bytes& file) {
    const Result<Decoded> decoded = decode(tiff::codec, file);
    const auto pages = tiff::openDevelopedPages(readerOfBytes(file));
    return !decoded && decoded.failure().reason == Reason::otherFormat && !pages
           && pages.failure().reason == Reason::unsupported;
}

bool isRaw(const std::vector<TIFFRecipe>& pages) { return isRaw(makeTIFF(pages)); }

} // namespace

TEST(TIFFPageList, theFirstPageThatIsNoCopyIsThePictureAndCopiesAreLast) {
    EXPECT_EQ(widthsOf({marked(3), picture(9), marked(5), picture(20)}), (Widths{9, 20, 3, 5}));
    EXPECT_EQ(widthsOf({picture(4), picture(9)}), (Widths{4, 9}));
}

TEST(TIFFPageList, theOldTagAlsoMarksCopies) {
    const Bytes file = makeTIFF({picture(9), marked(3, 2)}); // 2 in the new tag means one page of several
    EXPECT_EQ(widthsOf(file), (Widths{9, 3}));
    EXPECT_EQ(widthsOf({marked(3, 2), picture(9)}), (Widths{3, 9}));
    EXPECT_EQ(widthsOf(retagged(makeTIFF({marked(3, 2), picture(9)}), TIFFTAG_SUBFILETYPE, 255)),
              (Widths{9, 3}));
}

TEST(TIFFPageList, masksAndDepthMapsAreNotThePicture) {
    for (const unsigned mark : {4u, 5u, 8u, 65537u})
        EXPECT_EQ(widthsOf({marked(9, mark), picture(9)}), (Widths{9, 9})) << mark;
    EXPECT_EQ(widthsOf({marked(8, 4), picture(9)}), (Widths{9, 8}));
    EXPECT_EQ(widthsOf({marked(8, 8), picture(9)}), (Widths{9, 8}));
}

TEST(TIFFPageList, ifThereAreOnlyCopiesTheLargestIsThePicture) {
    EXPECT_EQ(widthsOf({marked(3)}), (Widths{3}));
    EXPECT_EQ(widthsOf({marked(3), marked(9), marked(5)}), (Widths{9, 3, 5}));
    EXPECT_EQ(widthsOf({with(marked(3), {marked(9)})}), (Widths{9, 3}));
}

TEST(TIFFPageList, theSubPageOfAPreviewIsThePicture) {
    EXPECT_EQ(widthsOf({with(marked(3), {picture(9)})}), (Widths{9, 3}));
    EXPECT_EQ(widthsOf({with(marked(3), {marked(5), picture(9)})}), (Widths{9, 3}));
    for (const char* mode : {"wb", "wl8"})
        EXPECT_EQ(widthsOf(makeTIFF(with(marked(3), {picture(9)}), mode)), (Widths{9, 3})) << mode;
}

TEST(TIFFPageList, anUnmarkedPageSmallerThanItsSubPageIsAPreview) {
    EXPECT_EQ(widthsOf({with(picture(3), {picture(9)})}), (Widths{9, 3}));
}

TEST(TIFFPageList, reducedSubPagesOfAPictureAreNotListed) {
    EXPECT_EQ(widthsOf({with(picture(9), {marked(5), marked(3)}), picture(4)}), (Widths{9, 4}));
}

TEST(TIFFPageList, aFileOfPreviewsAndSensorDataHasNoPages) {
    for (const std::uint16_t photometric : {colorFilterArray, linearRaw}) {
        EXPECT_TRUE(isRaw({with(marked(3), {sensor(40, photometric)})}));
        EXPECT_TRUE(isRaw({with(marked(3), {marked(20), sensor(40, photometric)})}));
        EXPECT_TRUE(isRaw({marked(3), sensor(40, photometric)}));
        EXPECT_TRUE(isRaw({with(sensor(40, photometric), {marked(20)})}));
        EXPECT_TRUE(isRaw({sensor(40, photometric)}));
    }
}

TEST(TIFFPageList, aPictureSmallerThanTheSensorDataIsAPreview) {
    EXPECT_TRUE(isRaw({picture(20), marked(3), sensor(40)}));
    EXPECT_TRUE(isRaw({with(marked(3), {picture(20), sensor(40)})}));
    EXPECT_EQ(widthsOf({with(picture(38), {sensor(40)})}), (Widths{38}));
    EXPECT_EQ(decode(tiff::codec, makeTIFF({with(picture(38), {sensor(40)})})).failure().reason,
              Reason::otherFormat);
    EXPECT_EQ(widthsOf({with(marked(3), {picture(38), sensor(40)})}), (Widths{38, 3}));
}

TEST(TIFFPageList, sensorDataIsRecognisedByItsTags) {
    TIFFRecipe slices = picture(40);
    slices.tags = [](TIFF* tiff) { TIFFSetField(tiff, TIFFTAG_THRESHHOLDING, THRESHHOLD_BILEVEL); };
    const Bytes plain = makeTIFF({picture(20), slices});
    EXPECT_EQ(widthsOf(plain), (Widths{20, 40}));
    for (const std::uint16_t tag : std::vector<std::uint16_t>{33422, 50656, 50752}) {
        const Bytes file = retagged(plain, TIFFTAG_THRESHHOLDING, tag);
        EXPECT_TRUE(isRaw(file)) << tag;
        EXPECT_TRUE(isRaw(retagged(file, TIFFTAG_IMAGEWIDTH, 65000))) << tag << " without a width";
    }
}

TEST(TIFFPageList, anRGBPageWithATagOfTheRawFormatIsAPicture) {
    TIFFRecipe page = picture(9);
    page.tags = [](TIFF* tiff) { TIFFSetField(tiff, 50706, "\1\4\0\0"); };
    EXPECT_EQ(widthsOf({page}), (Widths{9}));
}

TEST(TIFFPageList, anUnreadablePictureIsNotReplacedByItsPreview) {
    EXPECT_TRUE(failsToDecode(tiff::codec, makeTIFF({marked(3), signedSamples(9)})));
    EXPECT_TRUE(failsToDecode(tiff::codec, makeTIFF({with(marked(3), {signedSamples(9)})})));
    const Bytes file = makeTIFF({with(marked(3), {picture(9)})});
    Bytes broken = file;
    const Bytes entry = {0x4A, 0x01, 13, 0, 1, 0, 0, 0}; // the pointer to the sub-page
    auto found = std::ranges::search(broken, entry);
    ASSERT_FALSE(found.empty());
    *(found.end() + 2) = 0x7F;
    EXPECT_TRUE(failsToDecode(tiff::codec, broken));
}

TEST(TIFFPageList, aSubPageThatIsAlsoAPageIsListedOnce) {
    Bytes file = makeTIFF({with(marked(3), {picture(9)}), picture(5)});
    const Bytes entry = {0x4A, 0x01, 13, 0, 1, 0, 0, 0};
    const auto found = std::ranges::search(file, entry);
    ASSERT_FALSE(found.empty());
    std::copy_n(file.begin() + 4, 4, found.end()); // to the first page
    EXPECT_EQ(widthsOf(file), (Widths{5, 3}));
}

} // namespace kestrine::testing
