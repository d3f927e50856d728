#include "platform/foundation/NSException.h"
#include "platform/imageio/LocalSource.h"
#include "tests/_MyClasses/LoadedImage.h"

#include <cmath>
#include <limits>

namespace kestrine::myUtility {

using testing::LoadedImage;
using testing::pixelsOf;
using testing::samePicture;
using testing::sampleAt;

TEST(Resolution, aPictureOf3000By2000At300DPIHas720By480Points) {
    const LoadedImage loaded(300, 200, 300); // a tenth of it
    EXPECT_EQ(loaded.image->size(), (NSSize{72, 48}));
    EXPECT_EQ(imageResolution(*loaded.image), (NSSize{300.0F / 72.0F, 300.0F / 48.0F}))
        << "both divide the width";
    convertResolution(*loaded.image);
    EXPECT_EQ(loaded.image->size(), (NSSize{300, 200}));
    EXPECT_EQ(imageResolution(*loaded.image), (NSSize{1.0F, 1.5F}));
}

TEST(Resolution, anImageWithoutRepresentationsConvertsToNothingAndHasNoResolution) {
    NSImage empty({10, 10});
    EXPECT_THROW(imageResolution(empty), NSException);
    convertResolution(empty);
    EXPECT_EQ(empty.size(), (NSSize{0, 0}));
}

TEST(Resolution, convertingItChangesNoEarlierImage) {
    const LoadedImage loaded(300, 200, 300);
    const ImagePointer turned = rotate(loaded.image);
    const PixelBuffer before = pixelsOf(turned);
    convertResolution(*loaded.image);
    EXPECT_EQ(turned->size(), (NSSize{48, 72}));
    EXPECT_TRUE(samePicture(pixelsOf(turned), before));
}

TEST(Resolution, isInfiniteForASideWithoutLength) {
    const LoadedImage loaded(30, 20);
    loaded.image->setSize({0, -0.0F});
    EXPECT_EQ(imageResolution(*loaded.image).width, std::numeric_limits<float>::infinity());
    EXPECT_EQ(imageResolution(*loaded.image).height, -std::numeric_limits<float>::infinity());
}

TEST(Turns, eachMovesTheCornersToTheExpectedPlaces) {
    const LoadedImage loaded(40, 30);
    const PixelBuffer before = pixelsOf(loaded.image);
    const ImagePointer left = clockwiseRotate(loaded.image), right = rotate(loaded.image);
    EXPECT_EQ(left->size(), (NSSize{30, 40}));
    EXPECT_EQ(right->size(), (NSSize{30, 40}));
    for (std::size_t c = 0; c < 3; ++c) {
        EXPECT_EQ(sampleAt(pixelsOf(left), 0, 39, c), sampleAt(before, 0, 0, c))
            << "bottom left was top left";
        EXPECT_EQ(sampleAt(pixelsOf(right), 0, 39, c), sampleAt(before, 39, 29, c))
            << "bottom left was bottom right";
    }
}

TEST(Turns, aTurnAndItsOppositeRestoreThePictureAndItsSize) {
    const LoadedImage loaded(40, 30);
    const ImagePointer back = clockwiseRotate(rotate(loaded.image));
    EXPECT_EQ(back->size(), loaded.image->size());
    EXPECT_TRUE(samePicture(pixelsOf(back), pixelsOf(loaded.image)));
}

TEST(Turns, anUnconvertedPictureIsTurnedAtItsSizeInPoints) {
    const ImagePointer turned = rotate(LoadedImage(300, 200, 300).image);
    EXPECT_EQ(turned->size(), (NSSize{48, 72}));
    EXPECT_EQ(turned->representations().front()->pixelsWide(), 48);
}

TEST(Thumbnail, fitsInto128PointsAndSetsTheSizeOfTheBestRepresentation) {
    const struct {
        std::uint32_t width, height;
        NSSize expected;
    } rows[] = {{400, 300, {128, 96}}, {300, 400, {96, 128}}, {200, 200, {128, 128}}, {64, 32, {128, 64}}};
    for (const auto& row : rows) {
        const LoadedImage loaded(row.width, row.height);
        const NSSize own = loaded.image->size();
        const ImagePointer thumbnail = thumbnailImage(loaded.image);
        EXPECT_EQ(thumbnail->size(), row.expected);
        EXPECT_EQ(loaded.image->bestRepresentation()->size(), row.expected);
        EXPECT_EQ(loaded.image->size(), own) << "only the representation has changed";
        EXPECT_EQ(pixelsOf(thumbnail).format.width, static_cast<std::uint32_t>(row.expected.width));
        EXPECT_EQ(pixelsOf(thumbnail).format.height, static_cast<std::uint32_t>(row.expected.height));
    }
}

TEST(Thumbnail, hasTheUnroundedAspectOfTheRepresentationInPoints) {
    const LoadedImage loaded(300, 200);
    loaded.image->bestRepresentation()->setSize({300, 70});
    EXPECT_EQ(thumbnailImage(loaded.image)->size(), (NSSize{128, 70.0F * 128.0F / 300.0F}));
}

TEST(Thumbnail, showsTheWholePictureAndASecondOneShowsTheSame) {
    const LoadedImage loaded(400, 300);
    const ImagePointer drawn = resizedImageWithSize(loaded.image, {128, 96});
    const ImagePointer first = thumbnailImage(loaded.image);
    EXPECT_TRUE(samePicture(pixelsOf(first), pixelsOf(drawn)));
    EXPECT_TRUE(samePicture(pixelsOf(thumbnailImage(loaded.image)), pixelsOf(drawn)));
}

TEST(Thumbnail, changesNoEarlierImage) {
    const LoadedImage loaded(400, 300);
    const ImagePointer turned = rotate(loaded.image);
    const PixelBuffer before = pixelsOf(turned);
    thumbnailImage(loaded.image);
    EXPECT_EQ(turned->size(), (NSSize{300, 400}));
    EXPECT_TRUE(samePicture(pixelsOf(turned), before));
    EXPECT_EQ(resizedImageWithRatio(loaded.image, 1, false)->size(), (NSSize{400, 300}));
}

TEST(Thumbnail, ofAnImageWithoutRepresentationsShowsNothing) {
    const ImagePointer thumbnail = thumbnailImage(std::make_shared<NSImage>(NSSize{10, 10}));
    EXPECT_TRUE(std::isnan(thumbnail->size().width)) << "0 x 128 / 0";
    EXPECT_EQ(thumbnail->size().height, 128.0F);
    EXPECT_TRUE(thumbnail->representations().empty());
    EXPECT_EQ(thumbnailImage(nullptr), nullptr);
}

TEST(Translucent, withAlpha1EqualsThePictureAndWithAlpha0IsClear) {
    const LoadedImage loaded(40, 30);
    const ImagePointer opaque = translucentImageWithAlpha(loaded.image, 1.0F);
    EXPECT_NE(opaque, loaded.image);
    EXPECT_EQ(opaque->size(), loaded.image->size());
    EXPECT_TRUE(samePicture(pixelsOf(opaque), pixelsOf(loaded.image)));
    const PixelBuffer clear = pixelsOf(translucentImageWithAlpha(loaded.image, 0.0F));
    EXPECT_TRUE(samePicture(clear, testing::makePicture(clear.format, [](auto, auto, auto) { return 0U; })));
    EXPECT_TRUE(clear.format.hasAlpha);
}

TEST(Translucent, alphaIsMultipliedAndColourStays) {
    const LoadedImage loaded(
        testing::makePicture({4, 1, ColorModel::rgb, true, SampleDepth::bits8},
                             [](auto x, auto, std::size_t c) { return c == 3 ? x * 80 : 60U; }));
    const PixelBuffer half = pixelsOf(translucentImageWithAlpha(loaded.image, 0.5F));
    for (std::uint32_t x = 0; x < 4; ++x) {
        EXPECT_EQ(sampleAt(half, x, 0, 3), x * 40);
        EXPECT_EQ(sampleAt(half, x, 0, 0), x == 0 ? 0U : 60U) << "what is clear has no colour";
    }
}

TEST(Translucent, alphaIsLimitedToItsRange) {
    const LoadedImage loaded(4, 3);
    for (const float alpha : {-1.0F, std::nanf(""), -std::numeric_limits<float>::infinity()})
        EXPECT_EQ(sampleAt(pixelsOf(translucentImageWithAlpha(loaded.image, alpha)), 0, 0, 3), 0U) << alpha;
    for (const float alpha : {2.0F, std::numeric_limits<float>::infinity()})
        EXPECT_TRUE(
            samePicture(pixelsOf(translucentImageWithAlpha(loaded.image, alpha)), pixelsOf(loaded.image)))
            << alpha;
    EXPECT_EQ(translucentImageWithAlpha(nullptr, 0.5F), nullptr);
}

TEST(Translucent, isMixedWithWhiteInAJPEG) {
    const LoadedImage loaded(testing::makePicture({16, 16, ColorModel::rgb, false, SampleDepth::bits8},
                                                  [](auto, auto, auto) { return 55U; }));
    const auto jpeg = JPEGRepresentationWithCompression(*translucentImageWithAlpha(loaded.image, 0.5F), 1.0F);
    const PixelBuffer decoded = *readPixels({*LocalSource::open(readerOfBytes(jpeg->bytes())), 0, {}});
    EXPECT_NEAR(sampleAt(decoded, 8, 8, 0), 55 * 128 / 255 + 127, 2);
}

} // namespace kestrine::myUtility
