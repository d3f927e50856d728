#include "platform/coreimage/CIImage.h"

#include "platform/imageio/Codecs.h"
#include "platform/imageio/LocalSource.h"
#include "platform/imageio/Render.h"
#include "tests/support/Pictures.h"

#include <limits>

namespace kestrine {

namespace {

CIImage imageOf(std::uint32_t width, std::uint32_t height) {
    const auto pixels = testing::makePhoto({width, height, ColorModel::rgb, false, SampleDepth::bits8});
    const auto rows = rowsOfPixels(std::make_shared<PixelBuffer>(pixels));
    return CIImage({*LocalSource::open(readerOfBytes(*encoded(tiff::encode, *rows, {}))), 0, {}});
}

const Resampling& lastStep(const CIImage& image) {
    return std::get<Resampling>(image.picture().steps.back());
}

} // namespace

TEST(LanczosScaleTransform, aFractionalSideLosesItsFractionUnlessItIsWithinAHundredthOfAPixel) {
    const CIImage image = imageOf(100, 100);
    EXPECT_EQ(lanczosScaleTransform(image, 0.508F, 1)->extent(), (CIExtent{50, 50}));
    EXPECT_EQ(lanczosScaleTransform(image, 0.50995F, 1)->extent(), (CIExtent{51, 51}));
    EXPECT_EQ(lanczosScaleTransform(image, 0.51F, 0.5F)->extent(), (CIExtent{25, 51}));
}

TEST(LanczosScaleTransform,
     aReductionOfEitherAxisIsFilteredInLinearLightAndAnEnlargementInTheStoredEncoding) {
    const CIImage image = imageOf(10, 10);
    EXPECT_EQ(lastStep(*lanczosScaleTransform(image, 0.5F, 1)).light, Light::linear);
    EXPECT_EQ(lastStep(*lanczosScaleTransform(image, 2, 0.4F)).light, Light::linear);
    EXPECT_EQ(lastStep(*lanczosScaleTransform(image, 2, 0.5F)).light, Light::stored);
    EXPECT_EQ(lastStep(*lanczosScaleTransform(image, 3, 1)).light, Light::stored);
}

TEST(LanczosScaleTransform, scalesThatLeaveNoPixelOrAreNotANumberGiveNoImage) {
    const CIImage image = imageOf(10, 10);
    const float nan = std::numeric_limits<float>::quiet_NaN(),
                infinite = std::numeric_limits<float>::infinity();
    for (const float scale : {0.0F, -1.0F, 0.05F, nan, infinite, -infinite, 1e9F})
        EXPECT_FALSE(lanczosScaleTransform(image, scale, 1).has_value()) << scale;
    for (const float aspect : {0.0F, -1.0F, 0.05F, nan, infinite})
        EXPECT_FALSE(lanczosScaleTransform(image, 1, aspect).has_value()) << aspect;
}

TEST(LanczosScaleTransform, positionsCountFromTheLeftAndBottomEdges) {
    const Resampling scaled = lastStep(*lanczosScaleTransform(imageOf(100, 100), 0.333F, 1));
    ASSERT_EQ(scaled.y.outSize, 33U);
    EXPECT_DOUBLE_EQ(scaled.x.centre(0), 0.5 / static_cast<double>(0.333F));
    EXPECT_DOUBLE_EQ(scaled.y.centre(32), 100 - 0.5 / static_cast<double>(0.333F));
}

TEST(Crop, removesTheTopRowAndTheRightColumnAndMovesNoOtherPixel) {
    const auto scaled = lanczosScaleTransform(imageOf(100, 100), 0.333F, 1);
    const auto trimmed = crop(*scaled, {32, 32});
    ASSERT_TRUE(trimmed.has_value());
    EXPECT_EQ(trimmed->extent(), (CIExtent{32, 32}));
    EXPECT_DOUBLE_EQ(lastStep(*trimmed).x.centre(5), lastStep(*scaled).x.centre(5));
    EXPECT_DOUBLE_EQ(lastStep(*trimmed).y.centre(5), lastStep(*scaled).y.centre(6));
}

TEST(Crop, theTrimmedPictureHasThePixelsOfTheWholeOne) {
    const auto scaled = lanczosScaleTransform(imageOf(60, 40), 0.37F, 1);
    const PixelBuffer whole = *readPixels(scaled->picture());
    const PixelBuffer trimmed =
        *readPixels(crop(*scaled, {scaled->extent().width - 1, scaled->extent().height - 1})->picture());
    const PixelBuffer expected =
        testing::makePicture(trimmed.format, [&](std::uint32_t x, std::uint32_t y, std::size_t c) {
            return testing::sampleAt(whole, x, y + 1, c);
        });
    EXPECT_TRUE(testing::samePicture(trimmed, expected));
}

TEST(Crop, withoutPixelsThereIsNoImage) {
    const auto scaled = lanczosScaleTransform(imageOf(10, 10), 0.1F, 1);
    ASSERT_EQ(scaled->extent(), (CIExtent{1, 1}));
    EXPECT_FALSE(crop(*scaled, {0, 0}).has_value());
}

} // namespace kestrine
