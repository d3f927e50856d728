#include "platform/foundation/NSNumber.h"
#include "platform/imageio/LocalSource.h"
#include "tests/_MyClasses/LoadedImage.h"

#include <algorithm>
#include <cmath>

namespace kestrine::myUtility {

using testing::LoadedImage;
using testing::makePhoto;
using testing::samePicture;
using testing::sampleAt;

namespace {

const std::vector<NSString> profileAndExif = {NSImageColorSyncProfileData, NSImageEXIFData};

} // namespace

TEST(Encoding, clearPartsOfAJPEGAreWhite) {
    RowFormat format{16, 16, ColorModel::rgb, true, SampleDepth::bits8};
    const LoadedImage loaded(
        testing::makePicture(format, [](auto, auto, std::size_t c) { return c == 3 ? 0U : 60U; }));
    const auto jpeg = JPEGRepresentationWithCompression(*loaded.image, 1.0F, {}, {});
    const PixelBuffer decoded = *readPixels({*LocalSource::open(readerOfBytes(jpeg->bytes())), 0, {}});
    EXPECT_EQ(sampleAt(decoded, 8, 8, 1), 255U);
}

TEST(Encoding, anImageOf0By0PointsOr0By10PointsGivesNoJPEG) {
    EXPECT_EQ(JPEGRepresentationWithCompression(NSImage({0, 0}), 0.7F, {}, {}), nullptr);
    EXPECT_EQ(JPEGRepresentationWithCompression(NSImage({0, 10}), 0.7F, {}, {}), nullptr);
}

TEST(Encoding, theProfileAndEXIFOfAJPEGSourceAreKept) {
    const testing::TemporaryFolder folder;
    const ColorProfile profile = ColorProfile::adobeRGB();
    const auto rows = rowsOfPixels(std::make_shared<PixelBuffer>(makePhoto({16, 12, ColorModel::rgb})));
    const Bytes exif = {'M', 'M', 0, 42, 0, 0,   0,   8,   0, 1, 0x01, 0x0F, 0,
                        2,   0,   0, 0,  4, 'C', 'a', 'm', 0, 0, 0,    0,    0};
    const NSString path = NSString::fromUTF8(folder.write(
        "a.jpg", *encoded(jpeg::encode, *rows, {.quality = 0.9, .profile = &profile, .exif = exif})));
    const auto image = NSImage::initWithContentsOfFile(path);
    const ImageProperties kept = imagePropertiesForFile(*image, path, nullptr, profileAndExif);
    EXPECT_EQ(kept.size(), 2U);
    const auto jpeg = JPEGRepresentationWithCompression(*image, 0.7F, path, profileAndExif);
    const auto decoder = *openImage(readerOfBytes(jpeg->bytes()));
    EXPECT_EQ(decoder->frames().front().profile, profile);
    EXPECT_FALSE(decoder->exif()->empty());
}

TEST(Encoding, withoutASourceOnlyTheFixedPropertiesRemain) {
    const LoadedImage loaded(16, 12);
    for (const OptionalString& source : {OptionalString(), OptionalString(u"")}) {
        EXPECT_TRUE(imagePropertiesForFile(*loaded.image, source, nullptr, profileAndExif).empty());
        const auto jpeg = JPEGRepresentationWithCompression(*loaded.image, 0.7F, source, profileAndExif);
        EXPECT_FALSE((*openImage(readerOfBytes(jpeg->bytes())))->frames().front().profile.has_value());
    }
}

TEST(Encoding, withoutNamesNothingIsKeptAndUnknownNamesAreIgnored) {
    const LoadedImage loaded(16, 12);
    EXPECT_TRUE(imagePropertiesForFile(*loaded.image, loaded.path, nullptr, {}).empty());
    EXPECT_TRUE(imagePropertiesForFile(*loaded.image, loaded.path, nullptr, {u"NSImageExifData"}).empty());
    EXPECT_EQ(imagePropertiesForFile(*loaded.image, loaded.path, nullptr, {u"x", NSImageColorSyncProfileData})
                  .size(),
              1U);
}

TEST(Encoding, aMissingSourceLosesTheEXIFButNotTheBitmapsProfile) {
    const LoadedImage loaded(16, 12);
    const ImageProperties kept =
        imagePropertiesForFile(*loaded.image, NSString(u"/nowhere.jpg"), nullptr, profileAndExif);
    EXPECT_EQ(kept.size(), 1U);
    EXPECT_TRUE(kept.contains(NSImageColorSyncProfileData));
}

TEST(Encoding, theProfileOfTheGivenBitmapIsPreferredToThatOfTheImage) {
    const LoadedImage loaded(16, 12); // it has a profile
    const auto untagged = *LocalSource::open(readerOfBytes(PNGRepresentation(*loaded.image)->bytes()));
    const NSBitmapImageRep bitmap({untagged, 0, {}}, {16, 12});
    const std::vector<NSString> names = {NSImageColorSyncProfileData};
    EXPECT_TRUE(imagePropertiesForFile(*loaded.image, loaded.path, &bitmap, names).empty());
    EXPECT_EQ(imagePropertiesForFile(*loaded.image, loaded.path, nullptr, names).size(), 1U);
    EXPECT_TRUE(imagePropertiesForFile(NSImage({5, 5}), loaded.path, nullptr, names).empty());
}

TEST(Encoding, theCompressionIsTheQualityLimitedToItsRange) {
    const LoadedImage loaded(64, 48);
    const auto jpeg = [&](float compression) {
        return JPEGRepresentationWithCompression(*loaded.image, compression)->bytes();
    };
    EXPECT_LT(jpeg(0.2F).size(), jpeg(0.7F).size());
    EXPECT_LT(jpeg(0.7F).size(), jpeg(1.0F).size());
    EXPECT_EQ(jpeg(-3.0F), jpeg(0.0F));
    EXPECT_EQ(jpeg(std::nanf("")), jpeg(0.0F));
    EXPECT_EQ(jpeg(70.0F), jpeg(1.0F));
}

TEST(Encoding, aPaletteIsKeptFromTheSourceFile) {
    const testing::TemporaryFolder folder;
    const auto rows = rowsOfPixels(std::make_shared<PixelBuffer>(makePhoto({16, 12, ColorModel::rgb})));
    const NSString path = NSString::fromUTF8(folder.write("a.gif", *encoded(gif::encode, *rows, {})));
    const auto image = NSImage::initWithContentsOfFile(path);
    const ImageProperties kept = imagePropertiesForFile(*image, path, nullptr, {NSImageRGBColorTable});
    ASSERT_TRUE(kept.contains(NSImageRGBColorTable));
    EXPECT_EQ(dynamic_cast<const NSData&>(*kept.at(NSImageRGBColorTable)).length() % 3, 0U);
}

TEST(Encoding, eachPropertyOfTheSourceIsKeptOnlyWhenItIsNamed) {
    const testing::TemporaryFolder folder;
    const PixelBuffer photo = makePhoto({16, 12, ColorModel::rgb});
    const auto rowsForGIF = rowsOfPixels(std::make_shared<PixelBuffer>(photo));
    const NSString gif = NSString::fromUTF8(folder.write("a.gif", *encoded(gif::encode, *rowsForGIF, {})));
    EXPECT_TRUE(imagePropertiesForFile(*NSImage::initWithContentsOfFile(gif), gif, nullptr, {NSImageEXIFData})
                    .empty());
    const auto rowsForJPEG = rowsOfPixels(std::make_shared<PixelBuffer>(photo));
    const Bytes exif = {'M', 'M', 0, 42, 0, 0,   0,   8,   0, 1, 0x01, 0x0F, 0,
                        2,   0,   0, 0,  4, 'C', 'a', 'm', 0, 0, 0,    0,    0};
    const NSString jpeg =
        NSString::fromUTF8(folder.write("a.jpg", *encoded(jpeg::encode, *rowsForJPEG, {.exif = exif})));
    const auto image = NSImage::initWithContentsOfFile(jpeg);
    EXPECT_TRUE(imagePropertiesForFile(*image, jpeg, nullptr, {NSImageRGBColorTable}).empty());
    EXPECT_EQ(imagePropertiesForFile(*image, jpeg, nullptr, {NSImageEXIFData}).size(), 1U);
}

TEST(Encoding, aGIFAlwaysDithersHalfTransparencyEvenWithoutMetadata) {
    RowFormat format{32, 32, ColorModel::rgb, true, SampleDepth::bits8};
    const LoadedImage loaded(
        testing::makePicture(format, [](auto, auto, std::size_t c) { return c == 3 ? 128U : 60U; }));
    const auto gif = GIFRepresentationWithSource(*loaded.image, {}, {});
    const PixelBuffer decoded = *readPixels({*LocalSource::open(readerOfBytes(gif->bytes())), 0, {}});
    unsigned shown = 0;
    for (std::uint32_t y = 0; y < 32; ++y)
        for (std::uint32_t x = 0; x < 32; ++x)
            shown += sampleAt(decoded, x, y, 3) > 0;
    EXPECT_NEAR(shown, 512, 64);
}

TEST(Encoding, pngAndTIFFWithoutNamesCarryNoProfile) {
    const LoadedImage loaded(16, 12);
    for (const auto& data : {PNGRepresentationWithSource(*loaded.image, loaded.path, {}),
                             TIFFRepresentationWithSource(*loaded.image, loaded.path, {})})
        EXPECT_FALSE((*openImage(readerOfBytes(data->bytes())))->frames().front().profile.has_value());
}

TEST(Encoding, anImageWithoutRepresentationsGivesNoOutput) {
    const NSImage empty({10, 10});
    EXPECT_EQ(PNGRepresentationWithSource(empty, {}, {}), nullptr);
    EXPECT_EQ(TIFFRepresentationWithSource(empty, {}, {}), nullptr);
    EXPECT_EQ(GIFRepresentationWithSource(empty, {}, {}), nullptr);
}

TEST(Encoding, aJPEGOfAnImageWithoutRepresentationsIsItsWhiteCanvas) {
    const auto jpeg = JPEGRepresentationWithCompression(NSImage({10, 6}), 1.0F);
    const PixelBuffer decoded = *readPixels({*LocalSource::open(readerOfBytes(jpeg->bytes())), 0, {}});
    EXPECT_TRUE(samePicture(decoded, testing::makePicture({10, 6, ColorModel::rgb, false, SampleDepth::bits8},
                                                          [](auto, auto, auto) { return 255U; })));
}

TEST(Encoding, aTurnAndItsOppositeKeepTheOrientationOfTheSource) {
    const testing::TemporaryFolder folder;
    const auto rows = rowsOfPixels(std::make_shared<PixelBuffer>(makePhoto({16, 12, ColorModel::rgb})));
    const Bytes exif = {'M', 'M', 0, 42, 0, 0, 0, 8, 0, 1, 0x01, 0x12, 0,
                        3,   0,   0, 0,  1, 0, 6, 0, 0, 0, 0,    0,    0};
    const NSString path =
        NSString::fromUTF8(folder.write("a.jpg", *encoded(jpeg::encode, *rows, {.exif = exif})));
    const auto image = NSImage::initWithContentsOfFile(path);
    const auto orientationIn = [&](const ImagePointer& drawn) {
        const auto jpeg = JPEGRepresentationWithCompression(*drawn, 0.7F, path, {NSImageEXIFData});
        const Bytes kept = *(*openImage(readerOfBytes(jpeg->bytes())))->exif();
        const Bytes tag = {0x01, 0x12, 0, 3, 0, 0, 0, 1, 0};
        const auto entry = std::ranges::search(kept, tag);
        return entry.empty() ? -1 : int{*entry.end()};
    };
    EXPECT_EQ(orientationIn(rotate(image)), 1);
    EXPECT_EQ(orientationIn(clockwiseRotate(rotate(image))), 6);
}

TEST(SharedPixels, picturesEqualThoseThatWentThroughTIFFBytes) {
    const LoadedImage loaded(30, 20, 144);
    const ImagePointer small = resizedImageWithSizeHQ(loaded.image, {7, 5});
    const auto shared = small->bitmapOfTIFFRepresentation();
    const auto bytes = shared->representationUsingType(FileType::tiff, {});
    const auto reread = *LocalSource::open(readerOfBytes(bytes->bytes()));
    EXPECT_TRUE(samePicture(*readPixels({reread, 0, {}}), *readPixels(shared->picture())));
    EXPECT_EQ(reread->frames().front().resolution, Resolution{});
}

TEST(Encoding, theShortFormsEqualTheLongOnesWithoutSourceAndNames) {
    const LoadedImage loaded(16, 12);
    const NSImage& image = *loaded.image;
    const std::pair<DataPointer, DataPointer> forms[] = {
        {JPEGRepresentationWithCompression(image, 0.7F),
         JPEGRepresentationWithCompression(image, 0.7F, std::nullopt, {})},
        {PNGRepresentation(image), PNGRepresentationWithSource(image, std::nullopt, {})},
        {GIFRepresentation(image), GIFRepresentationWithSource(image, std::nullopt, {})},
    };
    for (const auto& [shortForm, longForm] : forms) {
        ASSERT_NE(shortForm, nullptr);
        EXPECT_EQ(shortForm->bytes(), longForm->bytes());
        EXPECT_FALSE((*openImage(readerOfBytes(shortForm->bytes())))->frames().front().profile.has_value());
    }
}

TEST(Encoding, aGIFUsesTheColourTableOfItsSource) {
    const testing::TemporaryFolder folder;
    const auto twoColors =
        testing::makePicture({16, 12, ColorModel::rgb, false, SampleDepth::bits8},
                             [](auto x, auto, std::size_t c) { return c == 0 && x < 8 ? 200U : 0U; });
    const auto rows = rowsOfPixels(std::make_shared<PixelBuffer>(twoColors));
    const NSString source = NSString::fromUTF8(folder.write("a.gif", *encoded(gif::encode, *rows, {})));
    const LoadedImage photo(16, 12);
    const auto tableOf = [](const DataPointer& gif) {
        return *(*openImage(readerOfBytes(gif->bytes())))->colorTable();
    };
    const Bytes kept = tableOf(GIFRepresentationWithSource(*photo.image, source, {NSImageRGBColorTable}));
    EXPECT_EQ(kept, *(*openImage(*readerOfPath(source.utf8())))->colorTable());
    EXPECT_GT(tableOf(GIFRepresentationWithSource(*photo.image, source, {})).size(), kept.size())
        << "without it the colours are the picture's own";
}

TEST(Encoding, keepingThePropertiesOfAFileDecodesNoPixels) {
    const LoadedImage loaded(16, 12);
    const std::uint64_t before = LocalSource::decodesStarted();
    imagePropertiesForFile(*loaded.image, loaded.path, nullptr, {NSImageEXIFData, NSImageRGBColorTable});
    EXPECT_EQ(LocalSource::decodesStarted(), before) << "its header is enough";
}

} // namespace kestrine::myUtility
