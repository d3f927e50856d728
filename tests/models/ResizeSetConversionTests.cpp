#include "models/ResizeSet.h"

#include "platform/imageio/Codecs.h"
#include "tests/support/ExifBuilder.h"
#include "tests/support/Pictures.h"
#include "tests/support/PresetBuilder.h"
#include "tests/support/TemporaryFolder.h"

namespace kestrine {

using testing::makeSet;

namespace {

struct Pixels {
    std::uint32_t width, height;
    bool operator==(const Pixels&) const = default;
};

/// {0, 0} when there is nothing.
Pixels sizeOf(const std::shared_ptr<const NSData>& data) {
    if (data == nullptr)
        return {0, 0};
    const RowFormat format = (*openImage(readerOfBytes(data->bytes())))->frames().front().format;
    return {format.width, format.height};
}

/// A TIFF of that size in a temporary folder, converted by a set; the size of the result.
class Conversion {
public:
    Conversion(std::uint32_t width, std::uint32_t height, double dotsPerInch = 72) {
        const auto pixels = testing::makePhoto({width, height, ColorModel::rgb, false, SampleDepth::bits8});
        const auto rows = rowsOfPixels(std::make_shared<PixelBuffer>(pixels));
        path_ =
            folder_.write("a.tif", *encoded(tiff::encode, *rows, {.resolution = {dotsPerInch, dotsPerInch}}));
    }

    Pixels sizeWith(const std::shared_ptr<ResizeSet>& set) const { return sizeOf(dataWith(set)); }
    std::shared_ptr<const NSData> dataWith(const std::shared_ptr<ResizeSet>& set) const {
        return set->resizedImageDataWithFile(NSString::fromUTF8(path_), nullptr);
    }

private:
    testing::TemporaryFolder folder_;
    std::string path_;
};

} // namespace

TEST(FileName, theExtensionFollowsTheFormatInTheCaseOfTheSource) {
    const struct {
        const char16_t *source, *jpeg, *png, *other;
    } rows[] = {
        {u"/p/IMG_1.JPG", u"IMG_1.JPG", u"IMG_1.PNG", u"IMG_1.JPG"},
        {u"a.Jpeg", u"a.jpg", u"a.png", u"a.Jpeg"},
        {u"/p/scan", u"scan.JPG", u"scan.PNG", u"scan."},
        {u"/p/a.tar.gz", u"a.tar.jpg", u"a.tar.png", u"a.tar.gz"},
        {u"/p/Ärger.ÄÖ", u"Ärger.JPG", u"Ärger.PNG", u"Ärger.ÄÖ"},
        {u"/p/1.123", u"1.JPG", u"1.PNG", u"1.123"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(makeSet(u"S", {{u"formatType", 0}})->fileNameForPath(row.source), NSString(row.jpeg));
        EXPECT_EQ(makeSet(u"S", {{u"formatType", 1}})->fileNameForPath(row.source), NSString(row.png));
        EXPECT_EQ(makeSet(u"S", {{u"formatType", 9}})->fileNameForPath(row.source), NSString(row.other));
    }
    EXPECT_EQ(makeSet(u"S", {{u"formatType", 2}})->fileNameForPath(u"a.jpg"), NSString(u"a.tiff"));
    EXPECT_EQ(makeSet(u"S", {{u"formatType", 3}})->fileNameForPath(u"A.JPG"), NSString(u"A.GIF"));
}

TEST(ResizeFolder, isNamedAfterTheSetBesideTheFileWhenThereIsNoRoot) {
    EXPECT_EQ(makeSet(u"Web")->resizeFolderForPath(NSString(u"/Pictures/Trip")),
              NSString(u"/Pictures/Trip/Web"));
}

TEST(ResizeFolder, aRootEqualToTheFolderAddsNoLevel) {
    EXPECT_EQ(makeSet(u"Web")->resizeFolderForPath(NSString(u"/Pictures/Trip"), NSString(u"/Pictures/Trip")),
              NSString(u"/Pictures/Trip/Web"));
}

TEST(ResizeFolder, aFolderInsideTheRootKeepsItsPlaceBelowTheSetsFolder) {
    EXPECT_EQ(
        makeSet(u"Web")->resizeFolderForPath(NSString(u"/Pictures/Trip/Day1"), NSString(u"/Pictures/Trip")),
        NSString(u"/Pictures/Trip/Web/Day1"));
}

TEST(ResizeFolder, aFolderOutsideTheRootKeepsItsWholePath) {
    EXPECT_EQ(makeSet(u"Web")->resizeFolderForPath(NSString(u"/Elsewhere"), NSString(u"/Pictures/Trip")),
              NSString(u"/Pictures/Trip/Web/Elsewhere"));
}

TEST(ResizeFolder, aChosenFolderIsUsedIfTheSetAsksForOneAndItExists) {
    const auto set = makeSet(u"Web", {{u"chooseFolder", true}});
    EXPECT_EQ(set->resizeFolderForPath(NSString(u"/P")), NSString(u"/P/Web"));
    set->setValueForKey(NSString(u"/out").object(), u"chosenFolderPath");
    EXPECT_EQ(set->resizeFolderForPath(NSString(u"/P")), NSString(u"/out"));
    EXPECT_EQ(set->resizeFolderForPath(NSString(u"/P/a/b"), NSString(u"/P")), NSString(u"/out/a/b"));
}

TEST(ResizeFolder, aChosenFolderIsIgnoredIfTheSetDoesNotAskForOne) {
    const auto set = makeSet(u"Web");
    set->setValueForKey(NSString(u"/out").object(), u"chosenFolderPath");
    EXPECT_EQ(set->resizeFolderForPath(NSString(u"/P")), NSString(u"/P/Web"));
    EXPECT_EQ(set->resizeFolderForPath(NSString(u"/P/a"), NSString(u"/P")), NSString(u"/P/Web/a"));
}

TEST(ResizeFolder, isMissingWhenTheFolderIsMissing) {
    EXPECT_FALSE(makeSet(u"Web")->resizeFolderForPath({}).has_value());
}

TEST(Sizing, aSquarePictureIsScaledByHeight) {
    EXPECT_EQ(Conversion(90, 90).sizeWith(makeSet(u"S", {{u"resizeType", 2}, {u"maxSize", 30.0F}})),
              (Pixels{31, 31}));
}

TEST(Sizing, onlyHighQualityMakesTheLongerSideOnePixelLarger) {
    const Conversion landscape(600, 400);
    EXPECT_EQ(landscape.sizeWith(makeSet(u"S", {{u"resizeType", 2}, {u"maxSize", 120.0F}})),
              (Pixels{121, 80}));
    EXPECT_EQ(landscape.sizeWith(
                  makeSet(u"S", {{u"resizeType", 2}, {u"maxSize", 120.0F}, {u"highQuality", false}})),
              (Pixels{120, 80}));
    EXPECT_EQ(Conversion(400, 600).sizeWith(makeSet(u"S", {{u"resizeType", 2}, {u"maxSize", 120.0F}})),
              (Pixels{80, 121}));
}

TEST(Sizing, theLongerSideGrowsByTheStoredByteOfHighQuality) {
    const Conversion landscape(600, 400);
    const auto withByte = [](std::int8_t highQuality) {
        return makeSet(u"S", {{u"resizeType", 2}, {u"maxSize", 120.0F}, {u"highQuality", highQuality}});
    };
    EXPECT_EQ(landscape.sizeWith(withByte(3)), (Pixels{123, 82}));
    EXPECT_EQ(landscape.sizeWith(withByte(-1)), (Pixels{119, 79}));
}

TEST(Sizing, aRatioUsesTheFilterThatHighQualityAsksFor) {
    const Conversion landscape(600, 400);
    const auto half = [](bool HQ) {
        return makeSet(u"S", {{u"resizeType", 1}, {u"ratio", 50.0F}, {u"highQuality", HQ}});
    };
    const auto width300 = [](bool HQ) {
        return makeSet(u"S", {{u"width", 300.0F}, {u"height", 0.0F}, {u"highQuality", HQ}});
    };
    for (const bool HQ : {true, false})
        EXPECT_EQ(landscape.dataWith(half(HQ))->bytes(), landscape.dataWith(width300(HQ))->bytes());
    EXPECT_NE(landscape.dataWith(half(true))->bytes(), landscape.dataWith(half(false))->bytes());
}

TEST(Sizing, aZeroHeightScalesByWidthAloneAndAZeroWidthByHeight) {
    const Conversion landscape(600, 400);
    EXPECT_EQ(
        landscape.sizeWith(makeSet(u"S", {{u"width", 80.0F}, {u"height", 0.0F}, {u"highQuality", false}})),
        (Pixels{80, 53}));
    EXPECT_EQ(
        landscape.sizeWith(makeSet(u"S", {{u"width", 0.0F}, {u"height", 80.0F}, {u"highQuality", false}})),
        (Pixels{120, 80}));
    EXPECT_EQ(landscape.sizeWith(makeSet(u"S", {{u"width", 0.0F}, {u"height", 0.0F}})), (Pixels{0, 0}));
}

TEST(Sizing, twoGivenSidesAreUsedAsTheyAre) {
    const Conversion landscape(600, 400);
    EXPECT_EQ(landscape.sizeWith(makeSet(u"S", {{u"width", 50.0F}, {u"height", 50.0F}})), (Pixels{50, 50}));
    EXPECT_EQ(
        landscape.sizeWith(makeSet(u"S", {{u"width", 50.0F}, {u"height", 70.0F}, {u"highQuality", false}})),
        (Pixels{50, 70}));
}

TEST(Sizing, ratio50HalvesBothSidesAndRatio10000IsTheIdentity) {
    const Conversion landscape(600, 400);
    EXPECT_EQ(landscape.sizeWith(makeSet(u"S", {{u"resizeType", 1}, {u"ratio", 50.0F}})), (Pixels{300, 200}));
    EXPECT_EQ(
        landscape.sizeWith(makeSet(u"S", {{u"resizeType", 1}, {u"ratio", 50.0F}, {u"highQuality", false}})),
        (Pixels{300, 200}));
    EXPECT_EQ(landscape.sizeWith(makeSet(u"S", {{u"resizeType", 1}, {u"ratio", 10000.0F}})),
              (Pixels{600, 400}));
    EXPECT_EQ(landscape.sizeWith(makeSet(u"S", {{u"resizeType", 1}, {u"ratio", 100.0F}})),
              (Pixels{600, 400}));
}

TEST(Sizing, anUnknownTypeWritesThePictureUnscaledAndAnUnknownFormatNothing) {
    EXPECT_EQ(Conversion(60, 40).sizeWith(makeSet(u"S", {{u"resizeType", 3}})), (Pixels{60, 40}));
    EXPECT_EQ(Conversion(60, 40).sizeWith(makeSet(u"S", {{u"formatType", 4}})), (Pixels{0, 0}));
}

TEST(Sizing, withoutConvertedResolutionSizesArePoints) {
    const Conversion scan(300, 200, 300); // 72 x 48 points
    const auto plain = [](bool HQ, std::int32_t format) {
        return makeSet(u"S", {{u"resizeType", 2},
                              {u"maxSize", 36.0F},
                              {u"convertResolution", false},
                              {u"highQuality", HQ},
                              {u"formatType", format}});
    };
    EXPECT_EQ(scan.sizeWith(plain(false, FormatTypePNG)), (Pixels{36, 24}));
    // The filter works on pixels with factors from points: 37 of 72 points, of 300 pixels.
    EXPECT_EQ(scan.sizeWith(plain(true, FormatTypePNG)), (Pixels{157, 105}));
    const auto unscaled =
        makeSet(u"S", {{u"resizeType", 3}, {u"convertResolution", false}, {u"formatType", 0}});
    EXPECT_EQ(scan.sizeWith(unscaled), (Pixels{72, 48})) << "flattening draws at the size in points";
    const auto converted = makeSet(u"S", {{u"resizeType", 3}, {u"formatType", 0}});
    EXPECT_EQ(scan.sizeWith(converted), (Pixels{300, 200})) << "converted, a point is a pixel";
}

/// The size of the result for a JPEG with Orientation 6, as a person sees it.
Pixels sizeOfTurned(std::uint32_t storedWidth, std::uint32_t storedHeight,
                    const std::shared_ptr<ResizeSet>& set) {
    const testing::TemporaryFolder folder;
    const auto pixels =
        testing::makePhoto({storedWidth, storedHeight, ColorModel::rgb, false, SampleDepth::bits8});
    const auto rows = rowsOfPixels(std::make_shared<PixelBuffer>(pixels));
    // Big-endian, one entry: Orientation 6.
    const Bytes exif = {'M', 'M', 0, 42, 0, 0, 0, 8, 0, 1, 0x01, 0x12, 0,
                        3,   0,   0, 0,  1, 0, 6, 0, 0, 0, 0,    0,    0};
    const NSString path = NSString::fromUTF8(
        folder.write("a.jpg", *encoded(jpeg::encode, *rows, {.quality = 0.9, .exif = exif})));
    return sizeOf(set->resizedImageDataWithFile(path, nullptr));
}

TEST(Orientation, sixIsTurnedBeforeScalingSoThatAPortraitCountsAsALandscape) {
    const auto turns = makeSet(u"S", {{u"resizeType", 2}, {u"maxSize", 30.0F}, {u"autoRotate", true}});
    EXPECT_EQ(sizeOfTurned(40, 60, turns), (Pixels{31, 20}));
    EXPECT_EQ(sizeOfTurned(60, 40, turns), (Pixels{20, 31}));
}

TEST(Orientation, aWidthIsThatOfTheTurnedPicture) {
    const auto turns =
        makeSet(u"S", {{u"width", 30.0F}, {u"height", 0.0F}, {u"autoRotate", true}, {u"highQuality", false}});
    EXPECT_EQ(sizeOfTurned(60, 40, turns), (Pixels{30, 45}));
}

TEST(Orientation, anyNonZeroStoredByteAsksForTurning) {
    for (const std::int8_t flag : std::initializer_list<std::int8_t>{1, 2, 127, -1, -128}) {
        const auto turns = makeSet(u"S", {{u"resizeType", 3}, {u"autoRotate", flag}});
        EXPECT_EQ(sizeOfTurned(60, 40, turns), (Pixels{40, 60})) << int{flag};
    }
    EXPECT_EQ(sizeOfTurned(60, 40, makeSet(u"S", {{u"resizeType", 3}})), (Pixels{60, 40}));
}

TEST(Quality, compression70GivesAQualityOf70Percent) {
    const testing::TemporaryFolder folder;
    const auto pixels = testing::makePhoto({64, 64, ColorModel::rgb, false, SampleDepth::bits8});
    const auto rows = rowsOfPixels(std::make_shared<PixelBuffer>(pixels));
    const NSString path = NSString::fromUTF8(folder.write("a.tif", *encoded(tiff::encode, *rows, {})));
    const auto set = makeSet(u"S", {{u"resizeType", 3}, {u"formatType", 0}, {u"compression", 70.0F}});
    const auto again = rowsOfPixels(std::make_shared<PixelBuffer>(pixels));
    EXPECT_EQ(set->resizedImageDataWithFile(path, nullptr)->bytes(),
              *encoded(jpeg::encode, *again, {.quality = 0.7}));
}

TEST(Quality, everyCompressionIsUsedAsItIsEven0) {
    const testing::TemporaryFolder folder;
    const auto pixels = testing::makePhoto({64, 64, ColorModel::rgb, false, SampleDepth::bits8});
    const auto rows = rowsOfPixels(std::make_shared<PixelBuffer>(pixels));
    const NSString path = NSString::fromUTF8(folder.write("a.tif", *encoded(tiff::encode, *rows, {})));
    for (const float percent : {0.0F, 1.0F, 69.0F, 100.0F}) {
        const auto set = makeSet(u"S", {{u"resizeType", 3}, {u"formatType", 0}, {u"compression", percent}});
        const auto again = rowsOfPixels(std::make_shared<PixelBuffer>(pixels));
        EXPECT_EQ(set->resizedImageDataWithFile(path, nullptr)->bytes(),
                  *encoded(jpeg::encode, *again, {.quality = static_cast<double>(percent) / 100}))
            << percent;
    }
}

TEST(Conversion, usesAGivenImageAsItIs) {
    const testing::TemporaryFolder folder;
    const auto pixels = testing::makePhoto({300, 200, ColorModel::rgb, false, SampleDepth::bits8});
    const auto rows = rowsOfPixels(std::make_shared<PixelBuffer>(pixels));
    const NSString path =
        NSString::fromUTF8(folder.write("a.tif", *encoded(tiff::encode, *rows, {.resolution = {300, 300}})));
    const auto image = NSImage::initWithContentsOfFile(path); // 72 x 48 points
    const auto set = makeSet(u"S", {{u"resizeType", 2}, {u"maxSize", 36.0F}, {u"convertResolution", true}});
    EXPECT_EQ(sizeOf(set->resizedImageDataWithFile(path, image)), (Pixels{157, 105}));
    EXPECT_EQ(image->size(), (NSSize{72, 48}));
}

TEST(Conversion, aMissingFileOrOneThatIsNotAPictureGivesNothing) {
    const testing::TemporaryFolder folder;
    const NSString text = NSString::fromUTF8(folder.write("a.jpg", "not a picture"));
    EXPECT_EQ(makeSet(u"S")->resizedImageDataWithFile(text, nullptr), nullptr);
    EXPECT_EQ(makeSet(u"S")->resizedImageDataWithFile(NSString::fromUTF8(folder / "none.jpg"), nullptr),
              nullptr);
    EXPECT_EQ(makeSet(u"S")->resizedImageDataWithFile(NSString::fromUTF8(folder.path().string()), nullptr),
              nullptr);
}

} // namespace kestrine
