#include "platform/imageio/Plausibility.h"
#include "tests/platform/imageio/gif/GIFFile.h"
#include "tests/platform/imageio/tiff/TIFFRecipe.h"

#include <gtest/gtest.h>

namespace kestrine::testing {

namespace {

constexpr std::uint64_t limit = std::uint64_t{1} << 28;

bool isPlausible(const FrameDescription& frame, std::uint64_t fileBytes) {
    return checkPlausible(frame, fileBytes).ok();
}

FrameDescription greyFrame(std::uint32_t width, std::uint32_t height) {
    return {.format = {.width = width, .height = height, .model = ColorModel::gray}};
}

/// A picture of one white pixel on a canvas.
Bytes canvasOf(int width, int height) {
    return GIFFile{.screenWidth = width, .screenHeight = height, .width = 1, .height = 1}.make();
}

} // namespace

TEST(Plausibility, aPictureUpToTheLimitNeedsNoCertainLength) {
    EXPECT_TRUE(isPlausible(greyFrame(1 << 14, 1 << 14), 1));
    EXPECT_FALSE(isPlausible(greyFrame(1 << 14, (1 << 14) + 1), 1));
}

TEST(Plausibility, aLargerOneNeedsAByteForEach2048) {
    const FrameDescription frame = greyFrame(1 << 15, 1 << 14);
    EXPECT_TRUE(isPlausible(frame, 2 * limit / 2048));
    EXPECT_FALSE(isPlausible(frame, 2 * limit / 2048 - 1));
}

TEST(Plausibility, rowsCountAsTheyAreStored) {
    FrameDescription frame = greyFrame(1 << 15, 1 << 15);
    frame.storedBitsPerPixel = 1;
    EXPECT_TRUE(isPlausible(frame, 1));
    frame.storedBitsPerPixel = 16;
    EXPECT_TRUE(isPlausible(frame, 8 * limit / 2048));
    EXPECT_FALSE(isPlausible(frame, 8 * limit / 2048 - 1));
}

TEST(Plausibility, everyFileIsCheckedWhenItIsOpened) {
    EXPECT_TRUE(openImage(readerOfBytes(canvasOf(1 << 14, 1 << 14))).ok());
    const auto decoder = openImage(readerOfBytes(canvasOf(32'767, 32'767)));
    ASSERT_FALSE(decoder.ok());
    EXPECT_EQ(decoder.failure().reason, Reason::implausible);
    EXPECT_EQ(decoder.failure().text, "the file is too short for a picture of 32767 x 32767 pixels");
}

TEST(Plausibility, anImplausibleLaterPageIsLeftOut) {
    TIFFRecipe claiming{
        .samples = 1, .photometric = PHOTOMETRIC_MINISBLACK, .compression = COMPRESSION_PACKBITS};
    claiming.sample = [](auto, auto, auto) { return 0U; };
    claiming.tags = [](TIFF* file) {
        TIFFSetField(file, TIFFTAG_IMAGEWIDTH, 20'000);
        TIFFSetField(file, TIFFTAG_IMAGELENGTH, 20'000);
    };
    const auto decoder = openImage(readerOfBytes(makeTIFF({TIFFRecipe{}, claiming, TIFFRecipe{.width = 7}})));
    ASSERT_TRUE(decoder.ok());
    ASSERT_EQ((*decoder)->frames().size(), 2U);
    EXPECT_EQ((*decoder)->frames().back().format.width, 7U);
    const auto alone = openImage(readerOfBytes(makeTIFF(claiming)));
    ASSERT_FALSE(alone.ok());
    EXPECT_EQ(alone.failure().reason, Reason::implausible);
}

} // namespace kestrine::testing
