#include "platform/foundation/NSData.h"
#include "platform/imageio/LocalSource.h"
#include "tests/_MyClasses/LoadedImage.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace kestrine::myUtility {

using testing::LoadedImage;
using testing::pixelsOf;
using testing::samePicture;
using testing::sampleAt;

namespace {

const Resampling& scalingOf(const ImagePointer& image) {
    return std::get<Resampling>(image->representations().front()->picture().steps.back());
}

} // namespace

TEST(RatioForm, ratio100ReturnsTheReceiverAndRatio1ANewImageOfTheSameSize) {
    const LoadedImage loaded(1000, 750);
    EXPECT_EQ(resizedImageWithRatio(loaded.image, 100.0F, true), loaded.image);
    const ImagePointer same = resizedImageWithRatio(loaded.image, 1.0F, false);
    EXPECT_NE(same, loaded.image);
    EXPECT_EQ(same->size(), loaded.image->size());
}

TEST(RatioForm, halfOf1000By750Is500By375) {
    const LoadedImage loaded(1000, 750);
    EXPECT_EQ(resizedImageWithRatio(loaded.image, 0.5F, false)->size(), (NSSize{500, 375}));
    EXPECT_EQ(resizedImageWithRatio(loaded.image, 0.5F, true)->size(), (NSSize{500, 375}));
}

TEST(WidthForm, theCurrentWidthReturnsTheReceiverAndOtherWidthsUseTheRatio) {
    const LoadedImage loaded(1000, 750);
    EXPECT_EQ(resizedImageWithWidthRatio(loaded.image, 1000.0F, true), loaded.image);
    EXPECT_EQ(resizedImageWithWidthRatio(loaded.image, 500.0F, false)->size(), (NSSize{500, 375}));
    EXPECT_EQ(resizedImageWithHeightRatio(loaded.image, 750.0F, true), loaded.image);
    EXPECT_EQ(resizedImageWithHeightRatio(loaded.image, 375.0F, false)->size(), (NSSize{500, 375}));
}

TEST(WidthForm, aRatioThatIsRoundedTo100ReturnsTheReceiverToo) {
    const LoadedImage loaded(10, 7);
    EXPECT_EQ(resizedImageWithWidthRatio(loaded.image, 1000.0F, true), loaded.image);
}

TEST(WidthForm, theLengthIsTheRoundedProductOfTheRatioNotTheTarget) {
    const float side = 21, target = 11;
    const float ratio = target / side;
    const float product = ratio * side;
    ASSERT_NE(product, target);
    EXPECT_EQ(resizedImageWithWidthRatio(LoadedImage(21, 5).image, target, false)->size().width, product);
    EXPECT_EQ(resizedImageWithHeightRatio(LoadedImage(5, 21).image, target, false)->size().height, product);
}

TEST(HighQuality, aSmallAspectCorrectionIsDroppedAndTheCropIsOnePixel) {
    const LoadedImage loaded(1000, 750);
    const ImagePointer result = resizedImageWithSizeHQ(loaded.image, {500, 375});
    const Resampling& scaling = scalingOf(result);
    const double scale = static_cast<double>(376.0F / 750.0F);
    EXPECT_EQ(scaling.x.scale, scale) << "the aspect factor is exactly 1";
    EXPECT_EQ(scaling.y.scale, scale);
    EXPECT_EQ(scaling.x.outSize, 500U); // floor(1000 * 376 / 750) - 1
    EXPECT_EQ(scaling.y.outSize, 375U);
}

TEST(HighQuality, aLargeAspectCorrectionIsUsedAsComputed) {
    const LoadedImage loaded(1000, 750);
    const float aspect = (501.0F / 501.0F) / (1000.0F / 750.0F);
    const ImagePointer result = resizedImageWithSizeHQ(loaded.image, {500, 500});
    const Resampling& scaling = scalingOf(result);
    EXPECT_EQ(scaling.x.scale, static_cast<double>(501.0F / 750.0F) * static_cast<double>(aspect));
    EXPECT_EQ(scaling.x.outSize, 500U);
    EXPECT_EQ(scaling.y.outSize, 500U);
}

TEST(HighQuality, theResultHasOneFilterRepresentationAndOnePointPerPixel) {
    const ImagePointer result = resizedImageWithSizeHQ(LoadedImage(100, 80, 300).image, {20.5F, 16.4F});
    ASSERT_EQ(result->representations().size(), 1U);
    const auto rep = std::dynamic_pointer_cast<NSCIImageRep>(result->representations().front());
    ASSERT_NE(rep, nullptr);
    EXPECT_EQ(result->size(),
              (NSSize{static_cast<float>(rep->pixelsWide()), static_cast<float>(rep->pixelsHigh())}));
}

TEST(HighQuality, emptySizesAndSizesThatAreNotNumbersGiveNil) {
    const LoadedImage loaded(100, 80);
    const float nan = std::numeric_limits<float>::quiet_NaN(),
                infinite = std::numeric_limits<float>::infinity();
    for (const NSSize size :
         {NSSize{0, 0}, {-5, -5}, {10, nan}, {infinite, infinite}, {1e9F, 1e9F}, {0.1F, 50}})
        EXPECT_EQ(resizedImageWithSizeHQ(loaded.image, size), nullptr) << size.width << " x " << size.height;
}

TEST(HighQuality, aWidthThatIsNotANumberFollowsTheHeight) {
    const ImagePointer result = resizedImageWithSizeHQ(LoadedImage(100, 80).image, {std::nanf(""), 8});
    EXPECT_EQ(result->size(), (NSSize{10, 8})); // 100 * 9 / 80, less the trimmed column
}

TEST(HighQuality, theReceiverIsNotChanged) {
    const LoadedImage loaded(100, 80);
    const PixelBuffer before = pixelsOf(loaded.image);
    resizedImageWithSizeHQ(loaded.image, {20, 16});
    EXPECT_TRUE(samePicture(pixelsOf(loaded.image), before));
    EXPECT_EQ(loaded.image->size(), (NSSize{100, 80}));
}

TEST(PlainPath, theResultHasExactlyTheRequestedSizeIncludingFractions) {
    const ImagePointer result = resizedImageWithSize(LoadedImage(100, 80).image, {33.3F, 7.5F});
    EXPECT_EQ(result->size(), (NSSize{33.3F, 7.5F}));
    EXPECT_EQ(result->representations().front()->pixelsWide(), 33);
    EXPECT_EQ(result->representations().front()->pixelsHigh(), 8);
}

TEST(PlainPath, anySizeGivesANewImageThatMayBeEmpty) {
    const LoadedImage loaded(100, 80);
    for (const NSSize size : {NSSize{0, 0}, {-5, 5}, {std::nanf(""), 10}, {1e30F, 10}}) {
        const ImagePointer result = resizedImageWithSize(loaded.image, size);
        ASSERT_NE(result, nullptr);
        EXPECT_TRUE(result->representations().empty());
    }
    EXPECT_EQ(resizedImageWithSize(loaded.image, {0.2F, 0.2F})->representations().front()->pixelsWide(), 1);
}

TEST(MaximumSize, theLongerSideDecidesAndTheHighQualityFlagIsAddedToTheLength) {
    const struct {
        std::uint32_t width, height;
        signed char HQ;
        NSSize expected;
    } rows[] = {
        {64, 32, 0, {16, 8}},   // by the width
        {32, 64, 0, {8, 16}},   // by the height
        {64, 64, 0, {16, 16}},  // a square by the height
        {300, 600, 1, {8, 17}}, // 17 high, and 8.5 wide: half a pixel is lost
        {600, 300, 1, {17, 8}},
        {300, 600, 2, {9, 18}}, // any value but 0 selects high quality, and is added to the length
    };
    for (const auto& row : rows) {
        const LoadedImage loaded(row.width, row.height);
        const ImagePointer result = resizedImageWithMaxSize(loaded.image, 16.0F, row.HQ);
        EXPECT_EQ(result->size(), row.expected)
            << row.width << " x " << row.height << ", " << int{row.HQ} << " gives " << result->size().width
            << " x " << result->size().height;
    }
}

TEST(MaximumSize, equalToTheCurrentLengthReturnsTheReceiverEvenInHighQuality) {
    const LoadedImage square(64, 64);
    EXPECT_EQ(resizedImageWithMaxSize(square.image, 64.0F, 0), square.image);
    EXPECT_EQ(resizedImageWithMaxSize(square.image, 63.0F, 1), square.image);
    EXPECT_NE(resizedImageWithMaxSize(square.image, 64.0F, 1), square.image);
}

TEST(MaximumSize, aHeightThatIsNotANumberFollowsTheWidth) {
    const LoadedImage loaded(40, 20);
    loaded.image->setSize({40, std::nanf("")});
    EXPECT_EQ(resizedImageWithMaxSize(loaded.image, 40.0F, 0), loaded.image) << "the width is 40 already";
}

TEST(FormsWithOneArgument, useHighQuality) {
    const LoadedImage loaded(60, 40);
    const std::pair<ImagePointer, ImagePointer> forms[] = {
        {resizedImageWithRatio(loaded.image, 0.4F), resizedImageWithRatio(loaded.image, 0.4F, true)},
        {resizedImageWithWidthRatio(loaded.image, 20.0F),
         resizedImageWithWidthRatio(loaded.image, 20.0F, true)},
        {resizedImageWithHeightRatio(loaded.image, 30.0F),
         resizedImageWithHeightRatio(loaded.image, 30.0F, true)},
        {resizedImageWithMaxSize(loaded.image, 25.0F), resizedImageWithMaxSize(loaded.image, 25.0F, 1)},
    };
    for (const auto& [one, two] : forms) {
        EXPECT_EQ(one->size(), two->size());
        EXPECT_EQ(scalingOf(one), scalingOf(two));
        EXPECT_EQ(scalingOf(one).filter, ResampleFilter::lanczos);
    }
}

TEST(Scaling, ofNilIsNil) {
    EXPECT_EQ(resizedImageWithRatio(nullptr, 0.5F), nullptr);
    EXPECT_EQ(resizedImageWithWidthRatio(nullptr, 5.0F), nullptr);
    EXPECT_EQ(resizedImageWithHeightRatio(nullptr, 5.0F), nullptr);
    EXPECT_EQ(resizedImageWithMaxSize(nullptr, 5.0F), nullptr);
    EXPECT_EQ(resizedImageWithSize(nullptr, {5, 5}), nullptr);
    EXPECT_EQ(resizedImageWithSizeHQ(nullptr, {5, 5}), nullptr);
}

TEST(CoreImageResults, becomeAnImageWithOneRepresentation) {
    const CIImage output(LoadedImage(12, 7).image->representations().front()->picture());
    const ImagePointer image = NSImageRepWithCImage(output);
    EXPECT_EQ(image->size(), (NSSize{12, 7}));
    ASSERT_EQ(image->representations().size(), 1U);
    EXPECT_NE(std::dynamic_pointer_cast<NSCIImageRep>(image->representations().front()), nullptr);
}

TEST(CoreImageResults, becomeABitmapOfRedGreenBlueAndAlphaInGenericRGB) {
    const PixelBuffer black =
        testing::makePicture({6, 4, ColorModel::gray, true, SampleDepth::bits16},
                             [](auto x, auto, std::size_t c) { return c == 1 ? x * 13107 : 0U; });
    const LoadedImage loaded(black);
    const auto bitmap =
        RGBABitmapImageRepWithCImage(CIImage(loaded.image->representations().front()->picture()));
    EXPECT_EQ(bitmap->size(), (NSSize{6, 4}));
    const auto data = bitmap->bitmapData();
    ASSERT_EQ(data->length(), 4U * 6 * 4) << "four bytes per pixel and nothing between the rows";
    for (std::size_t x = 0; x < 6; ++x)
        EXPECT_EQ(Bytes(data->bytes().begin() + 4 * x, data->bytes().begin() + 4 * x + 4),
                  (Bytes{0, 0, 0, static_cast<std::uint8_t>(x * 51)}));
    const ColorProfile generic = ColorProfile::genericRGB();
    const Object profile = bitmap->valueForProperty(NSImageColorSyncProfileData);
    EXPECT_TRUE(std::ranges::equal(dynamic_cast<const NSData&>(*profile).bytes(), generic.bytes()));
}

TEST(CoreImageResults, areRenderedOnlyWhenTheBitmapsPixelsAreRequested) {
    const LoadedImage loaded(30, 20);
    const std::uint64_t before = LocalSource::decodesStarted();
    const auto scaled =
        lanczosScaleTransform(CIImage(loaded.image->representations().front()->picture()), 0.5F, 1);
    const auto bitmap = RGBABitmapImageRepWithCImage(*scaled);
    EXPECT_EQ(LocalSource::decodesStarted(), before);
    EXPECT_EQ(bitmap->bitmapData()->length(), 4U * 15 * 10);
    EXPECT_EQ(LocalSource::decodesStarted(), before + 1);
}

} // namespace kestrine::myUtility
