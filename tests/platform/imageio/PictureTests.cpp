#include "platform/imageio/Picture.h"

#include "platform/imageio/Codecs.h"
#include "platform/imageio/LocalSource.h"
#include "platform/imageio/Render.h"
#include "tests/support/Pictures.h"

namespace kestrine {

using testing::makePhoto;
using testing::samePicture;
using testing::sampleAt;

namespace {

std::shared_ptr<Source> sourceOf(const PixelBuffer& pixels, const ColorProfile* profile = nullptr) {
    const auto rows = rowsOfPixels(std::make_shared<PixelBuffer>(pixels));
    return *LocalSource::open(readerOfBytes(*encoded(tiff::encode, *rows, {.profile = profile})));
}

const RowFormat grayFormat = {20, 30, ColorModel::gray, false, SampleDepth::bits16};
const RowFormat photoFormat = {20, 30, ColorModel::rgb, false, SampleDepth::bits8};
const Resampling half = {{0.5, 0, 10}, {0.5, 0, 15}, ResampleFilter::lanczos, Light::linear};

/// The same pixels as a separate picture.
Picture stored(const Picture& picture) {
    const auto profile = picture.profile();
    return {sourceOf(*readPixels(picture), profile ? &*profile : nullptr), 0, {}};
}

} // namespace

TEST(Picture, itsFormatIsThatOfItsRows) {
    const Picture gray{sourceOf(makePhoto(grayFormat)), 0, {}};
    const std::vector<std::vector<PictureStep>> lists = {
        {},
        {QuarterTurn::clockwise},
        {half},
        {Fade{0.5F}},
        {Fade{0.5F}, Flatten{}},
        {IntoGenericRGBA{}},
        {IntoGenericRGBA{}, half, QuarterTurn::counterclockwise, Flatten{}},
    };
    for (const auto& steps : lists) {
        const Picture picture{gray.source, 0, steps};
        EXPECT_EQ(readPixels(picture)->format, picture.format()) << steps.size() << " steps";
    }
}

TEST(Picture, itHasTheProfileOfTheSourceUntilItIsConverted) {
    const ColorProfile adobe = ColorProfile::adobeRGB();
    const Picture picture{sourceOf(makePhoto(photoFormat), &adobe), 0, {half, Flatten{}, Fade{0.5F}}};
    EXPECT_EQ(picture.profile(), adobe);
    const Picture converted = picture.with(IntoGenericRGBA{});
    EXPECT_EQ(converted.profile(), ColorProfile::genericRGB());
    EXPECT_EQ(converted.with(half).profile(), ColorProfile::genericRGB());
    EXPECT_EQ(Picture({sourceOf(makePhoto(photoFormat)), 0, {half}}).profile(), std::nullopt);
}

TEST(Picture, aFadeBeforeScalingEqualsOneAfterwards) {
    const Picture picture{sourceOf(makePhoto(photoFormat)), 0, {}};
    const PixelBuffer before = *readPixels(picture.with(Fade{0.4F}).with(half));
    EXPECT_TRUE(samePicture(before, *readPixels(picture.with(half).with(Fade{0.4F})), 1));
    EXPECT_EQ(sampleAt(before, 3, 3, 3), 102U);
}

TEST(Picture, aFadeIsTurnedWithThePicture) {
    const Picture picture{sourceOf(makePhoto(photoFormat)), 0, {}};
    EXPECT_TRUE(samePicture(*readPixels(picture.with(Fade{0.4F}).with(QuarterTurn::clockwise)),
                            *readPixels(picture.with(QuarterTurn::clockwise).with(Fade{0.4F}))));
}

TEST(Picture, stepsAfterTheConversionUseTheNewProfile) {
    const ColorProfile adobe = ColorProfile::adobeRGB();
    const Picture converted =
        Picture{sourceOf(makePhoto(photoFormat), &adobe), 0, {}}.with(IntoGenericRGBA{});
    EXPECT_TRUE(samePicture(*readPixels(converted.with(half)), *readPixels(stored(converted).with(half))));
    const Bytes gif = *render(converted, {FileType::gif, {}});
    EXPECT_EQ(gif, *render(stored(converted), {FileType::gif, {}})) << "a GIF is converted to sRGB";
}

TEST(Picture, aSecondConversionChangesNothing) {
    const Picture once{sourceOf(makePhoto(photoFormat)), 0, {IntoGenericRGBA{}}};
    EXPECT_TRUE(samePicture(*readPixels(once.with(IntoGenericRGBA{})), *readPixels(once)));
}

} // namespace kestrine
