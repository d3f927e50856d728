#include "_MyClasses/Category/ImageUtility.h"

#include "platform/foundation/NSException.h"
#include "platform/foundation/NSNumber.h"
#include "platform/imageio/Codecs.h"
#include "tests/support/ExifBuilder.h"
#include "tests/support/Pictures.h"
#include "tests/support/TemporaryFolder.h"

#include <cmath>
#include <limits>

namespace kestrine::myUtility {

using testing::makePhoto;
using testing::samePicture;
using testing::sampleAt;

namespace {

/// A picture in a file, at so many dots per inch, and the image loaded from it.
class Loaded {
public:
    explicit Loaded(const PixelBuffer& pixels, double dotsPerInch = 72)
        : path(NSString::fromUTF8(folder_.write("a.tif", tiffOf(pixels, dotsPerInch)))),
          image(NSImage::initWithContentsOfFile(path)) {}
    Loaded(std::uint32_t width, std::uint32_t height, double dotsPerInch = 72)
        : Loaded(makePhoto({width, height, ColorModel::rgb, false, SampleDepth::bits8}), dotsPerInch) {}

private:
    static Bytes tiffOf(const PixelBuffer& pixels, double dotsPerInch) {
        const ColorProfile profile = ColorProfile::adobeRGB();
        const auto rows = rowsOfPixels(std::make_shared<PixelBuffer>(pixels));
        return *encodeTIFF(*rows, {.resolution = {dotsPerInch, dotsPerInch}, .profile = &profile});
    }
    testing::TemporaryFolder folder_;

public:
    const NSString path;
    const ImagePointer image;
};

PixelBuffer pixelsOf(const ImagePointer& image) {
    return *readPixels(image->representations().front()->picture());
}

const Resampling& scalingOf(const ImagePointer& image) {
    return std::get<Resampling>(image->representations().front()->picture().steps.back());
}

const std::vector<NSString> profileAndExif = {NSImageColorSyncProfileData, NSImageEXIFData};

} // namespace

TEST(RatioForm, a100IsTheReceiverItselfAnd1ANewImageOfTheSameSize) {
    const Loaded loaded(1000, 750);
    EXPECT_EQ(resizedImageWithRatio(loaded.image, 100.0F, true), loaded.image);
    const ImagePointer same = resizedImageWithRatio(loaded.image, 1.0F, false);
    EXPECT_NE(same, loaded.image);
    EXPECT_EQ(same->size(), loaded.image->size());
}

TEST(RatioForm, aHalfOf1000By750AsksFor500By375) {
    const Loaded loaded(1000, 750);
    EXPECT_EQ(resizedImageWithRatio(loaded.image, 0.5F, false)->size(), (NSSize{500, 375}));
    EXPECT_EQ(resizedImageWithRatio(loaded.image, 0.5F, true)->size(), (NSSize{500, 375}));
}

TEST(WidthForm, theCurrentWidthIsTheReceiverAnd500Of1000GoesThroughTheRatioOfAHalf) {
    const Loaded loaded(1000, 750);
    EXPECT_EQ(resizedImageWithWidthRatio(loaded.image, 1000.0F, true), loaded.image);
    EXPECT_EQ(resizedImageWithWidthRatio(loaded.image, 500.0F, false)->size(), (NSSize{500, 375}));
    EXPECT_EQ(resizedImageWithHeightRatio(loaded.image, 750.0F, true), loaded.image);
    EXPECT_EQ(resizedImageWithHeightRatio(loaded.image, 375.0F, false)->size(), (NSSize{500, 375}));
}

TEST(WidthForm, aRatioThatComesOutAs100IsTheReceiverToo) {
    const Loaded loaded(10, 7);
    EXPECT_EQ(resizedImageWithWidthRatio(loaded.image, 1000.0F, true), loaded.image);
}

TEST(HighQuality, aSmallAspectCorrectionIsDroppedAndTheCropIsOnePixel) {
    const Loaded loaded(1000, 750);
    const ImagePointer result = resizedImageWithSizeHQ(loaded.image, {500, 375});
    const Resampling& scaling = scalingOf(result);
    const double scale = static_cast<double>(376.0F / 750.0F);
    EXPECT_EQ(scaling.x.scale, scale) << "the aspect factor is exactly 1";
    EXPECT_EQ(scaling.y.scale, scale);
    EXPECT_EQ(scaling.x.outSize, 500U); // floor(1000 * 376 / 750) - 1
    EXPECT_EQ(scaling.y.outSize, 375U);
}

TEST(HighQuality, aLargeAspectCorrectionIsUsedAsComputed) {
    const Loaded loaded(1000, 750);
    const float aspect = (501.0F / 501.0F) / (1000.0F / 750.0F);
    const ImagePointer result = resizedImageWithSizeHQ(loaded.image, {500, 500});
    const Resampling& scaling = scalingOf(result);
    EXPECT_EQ(scaling.x.scale, static_cast<double>(501.0F / 750.0F) * static_cast<double>(aspect));
    EXPECT_EQ(scaling.x.outSize, 500U);
    EXPECT_EQ(scaling.y.outSize, 500U);
}

TEST(HighQuality, theResultHasOneFilterRepresentationAndAsManyPointsAsPixels) {
    const ImagePointer result = resizedImageWithSizeHQ(Loaded(100, 80, 300).image, {20.5F, 16.4F});
    ASSERT_EQ(result->representations().size(), 1U);
    const auto rep = std::dynamic_pointer_cast<NSCIImageRep>(result->representations().front());
    ASSERT_NE(rep, nullptr);
    EXPECT_EQ(result->size(),
              (NSSize{static_cast<float>(rep->pixelsWide()), static_cast<float>(rep->pixelsHigh())}));
}

TEST(HighQuality, sizesThatLeaveNothingOrAreNoNumbersGiveNil) {
    const Loaded loaded(100, 80);
    const float nan = std::numeric_limits<float>::quiet_NaN(),
                infinite = std::numeric_limits<float>::infinity();
    for (const NSSize size :
         {NSSize{0, 0}, {-5, -5}, {10, nan}, {infinite, infinite}, {1e9F, 1e9F}, {0.1F, 50}})
        EXPECT_EQ(resizedImageWithSizeHQ(loaded.image, size), nullptr) << size.width << " x " << size.height;
}

TEST(HighQuality, aWidthThatIsNoNumberFollowsTheHeight) {
    const ImagePointer result = resizedImageWithSizeHQ(Loaded(100, 80).image, {std::nanf(""), 8});
    EXPECT_EQ(result->size(), (NSSize{10, 8})); // 100 * 9 / 80, less the trimmed column
}

TEST(HighQuality, theReceiverIsNotChanged) {
    const Loaded loaded(100, 80);
    const PixelBuffer before = pixelsOf(loaded.image);
    resizedImageWithSizeHQ(loaded.image, {20, 16});
    EXPECT_TRUE(samePicture(pixelsOf(loaded.image), before));
    EXPECT_EQ(loaded.image->size(), (NSSize{100, 80}));
}

TEST(PlainPath, theResultHasExactlyTheSizeAskedForFractionsIncluded) {
    const ImagePointer result = resizedImageWithSize(Loaded(100, 80).image, {33.3F, 7.5F});
    EXPECT_EQ(result->size(), (NSSize{33.3F, 7.5F}));
    EXPECT_EQ(result->representations().front()->pixelsWide(), 33);
    EXPECT_EQ(result->representations().front()->pixelsHigh(), 8);
}

TEST(PlainPath, anySizeGivesANewImageThoughItMayHoldNothing) {
    const Loaded loaded(100, 80);
    for (const NSSize size : {NSSize{0, 0}, {-5, 5}, {std::nanf(""), 10}, {1e30F, 10}}) {
        const ImagePointer result = resizedImageWithSize(loaded.image, size);
        ASSERT_NE(result, nullptr);
        EXPECT_TRUE(result->representations().empty());
    }
    EXPECT_EQ(resizedImageWithSize(loaded.image, {0.2F, 0.2F})->representations().front()->pixelsWide(), 1);
}

TEST(Resolution, aPictureOf3000By2000At300DPIHas720By480Points) {
    const Loaded loaded(300, 200, 300); // a tenth of it
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

TEST(Turns, eachPutsTheCornersWhereItShould) {
    const Loaded loaded(40, 30);
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

TEST(Turns, oneAndTheOtherGiveThePictureAndItsSizeBack) {
    const Loaded loaded(40, 30);
    const ImagePointer back = clockwiseRotate(rotate(loaded.image));
    EXPECT_EQ(back->size(), loaded.image->size());
    EXPECT_TRUE(samePicture(pixelsOf(back), pixelsOf(loaded.image)));
}

TEST(Turns, anUnconvertedPictureIsTurnedAtItsSizeInPoints) {
    const ImagePointer turned = rotate(Loaded(300, 200, 300).image);
    EXPECT_EQ(turned->size(), (NSSize{48, 72}));
    EXPECT_EQ(turned->representations().front()->pixelsWide(), 48);
}

TEST(Encoding, clearPartsOfAJPEGAreWhite) {
    RowFormat format{16, 16, ColorModel::rgb, true, SampleDepth::bits8};
    const Loaded loaded(
        testing::makePicture(format, [](auto, auto, std::size_t c) { return c == 3 ? 0U : 60U; }));
    const auto jpeg = JPEGRepresentationWithCompression(*loaded.image, 1.0F, {}, {});
    const PixelBuffer decoded = *readPixels({*Source::open(readerOfBytes(jpeg->bytes())), 0, {}});
    EXPECT_EQ(sampleAt(decoded, 8, 8, 1), 255U);
}

TEST(Encoding, anImageOf0By0PointsGivesNoJPEGAndOneOf0By10GoesOnAndGivesNoneEither) {
    EXPECT_EQ(JPEGRepresentationWithCompression(NSImage({0, 0}), 0.7F, {}, {}), nullptr);
    EXPECT_EQ(JPEGRepresentationWithCompression(NSImage({0, 10}), 0.7F, {}, {}), nullptr);
}

TEST(Encoding, aJPEGSourceHandsOnItsProfileAndEXIF) {
    const testing::TemporaryFolder folder;
    const ColorProfile profile = ColorProfile::adobeRGB();
    const auto rows = rowsOfPixels(std::make_shared<PixelBuffer>(makePhoto({16, 12, ColorModel::rgb})));
    const Bytes exif = {'M', 'M', 0, 42, 0, 0,   0,   8,   0, 1, 0x01, 0x0F, 0,
                        2,   0,   0, 0,  4, 'C', 'a', 'm', 0, 0, 0,    0,    0};
    const NSString path = NSString::fromUTF8(
        folder.write("a.jpg", *encodeJPEG(*rows, {.quality = 0.9, .profile = &profile, .exif = exif})));
    const auto image = NSImage::initWithContentsOfFile(path);
    const ImageProperties kept = imagePropertiesForFile(*image, path, nullptr, profileAndExif);
    EXPECT_EQ(kept.size(), 2U);
    const auto jpeg = JPEGRepresentationWithCompression(*image, 0.7F, path, profileAndExif);
    const auto decoder = *openImage(readerOfBytes(jpeg->bytes()));
    EXPECT_EQ(decoder->frames().front().profile, profile);
    EXPECT_FALSE(decoder->exif()->empty());
}

TEST(Encoding, withoutASourceOnlyTheFixedPropertiesAreLeft) {
    const Loaded loaded(16, 12);
    for (const OptionalString& source : {OptionalString(), OptionalString(u"")}) {
        EXPECT_TRUE(imagePropertiesForFile(*loaded.image, source, nullptr, profileAndExif).empty());
        const auto jpeg = JPEGRepresentationWithCompression(*loaded.image, 0.7F, source, profileAndExif);
        EXPECT_FALSE((*openImage(readerOfBytes(jpeg->bytes())))->frames().front().profile.has_value());
    }
}

TEST(Encoding, withoutNamesNothingIsKeptAndUnknownNamesAreIgnored) {
    const Loaded loaded(16, 12);
    EXPECT_TRUE(imagePropertiesForFile(*loaded.image, loaded.path, nullptr, {}).empty());
    EXPECT_TRUE(imagePropertiesForFile(*loaded.image, loaded.path, nullptr, {u"NSImageExifData"}).empty());
    EXPECT_EQ(imagePropertiesForFile(*loaded.image, loaded.path, nullptr, {u"x", NSImageColorSyncProfileData})
                  .size(),
              1U);
}

TEST(Encoding, aMissingSourceCostsItsEXIFButNotTheBitmapsProfile) {
    const Loaded loaded(16, 12);
    const ImageProperties kept =
        imagePropertiesForFile(*loaded.image, NSString(u"/nowhere.jpg"), nullptr, profileAndExif);
    EXPECT_EQ(kept.size(), 1U);
    EXPECT_TRUE(kept.contains(NSImageColorSyncProfileData));
}

TEST(Encoding, aPaletteIsKeptFromTheSourceFile) {
    const testing::TemporaryFolder folder;
    const auto rows = rowsOfPixels(std::make_shared<PixelBuffer>(makePhoto({16, 12, ColorModel::rgb})));
    const NSString path = NSString::fromUTF8(folder.write("a.gif", *encodeGIF(*rows, {})));
    const auto image = NSImage::initWithContentsOfFile(path);
    const ImageProperties kept = imagePropertiesForFile(*image, path, nullptr, {NSImageRGBColorTable});
    ASSERT_TRUE(kept.contains(NSImageRGBColorTable));
    EXPECT_EQ(dynamic_cast<const NSData&>(*kept.at(NSImageRGBColorTable)).length() % 3, 0U);
}

TEST(Encoding, aGIFAlwaysDithersHalfTransparencyAlsoWithoutMetadata) {
    RowFormat format{32, 32, ColorModel::rgb, true, SampleDepth::bits8};
    const Loaded loaded(
        testing::makePicture(format, [](auto, auto, std::size_t c) { return c == 3 ? 128U : 60U; }));
    const auto gif = GIFRepresentationWithSource(*loaded.image, {}, {});
    const PixelBuffer decoded = *readPixels({*Source::open(readerOfBytes(gif->bytes())), 0, {}});
    unsigned shown = 0;
    for (std::uint32_t y = 0; y < 32; ++y)
        for (std::uint32_t x = 0; x < 32; ++x)
            shown += sampleAt(decoded, x, y, 3) > 0;
    EXPECT_NEAR(shown, 512, 64);
}

TEST(Encoding, pngAndTIFFWithoutNamesCarryNoProfile) {
    const Loaded loaded(16, 12);
    for (const auto& data : {PNGRepresentationWithSource(*loaded.image, loaded.path, {}),
                             TIFFRepresentationWithSource(*loaded.image, loaded.path, {})})
        EXPECT_FALSE((*openImage(readerOfBytes(data->bytes())))->frames().front().profile.has_value());
}

TEST(Encoding, nothingIsMadeOfAnImageWithoutRepresentations) {
    const NSImage empty({10, 10});
    EXPECT_EQ(PNGRepresentationWithSource(empty, {}, {}), nullptr);
    EXPECT_EQ(TIFFRepresentationWithSource(empty, {}, {}), nullptr);
    EXPECT_EQ(GIFRepresentationWithSource(empty, {}, {}), nullptr);
}

TEST(SharedPixels, whatWouldGoThroughTIFFBytesIsTheSameAsIfItDid) {
    const Loaded loaded(30, 20, 144);
    const ImagePointer small = resizedImageWithSizeHQ(loaded.image, {7, 5});
    const auto shared = small->bitmapOfTIFFRepresentation();
    const auto bytes = shared->representationUsingType(FileType::tiff, {});
    const auto reread = *Source::open(readerOfBytes(bytes->bytes()));
    EXPECT_TRUE(samePicture(*readPixels({reread, 0, {}}), *readPixels(shared->picture())));
    EXPECT_EQ(reread->frames().front().resolution, Resolution{});
}

} // namespace kestrine::myUtility
