#include "platform/appkit/NSImage.h"

#include "platform/imageio/Codecs.h"
#include "platform/imageio/LocalSource.h"
#include "tests/support/Pictures.h"
#include "tests/support/TemporaryFolder.h"

#include <cmath>
#include <limits>

namespace kestrine {

using testing::makePhoto;
using testing::samePicture;
using testing::sampleAt;

namespace {

std::shared_ptr<Source> sourceOf(const PixelBuffer& pixels) {
    const auto rows = rowsOfPixels(std::make_shared<PixelBuffer>(pixels));
    return *LocalSource::open(readerOfBytes(*encoded(tiff::encode, *rows, {})));
}

std::shared_ptr<NSBitmapImageRep> photoRep(std::uint32_t width, std::uint32_t height) {
    const PixelBuffer photo = makePhoto({width, height, ColorModel::rgb, false, SampleDepth::bits8});
    return std::make_shared<NSBitmapImageRep>(Picture{sourceOf(photo), 0, {}},
                                              NSSize{static_cast<float>(width), static_cast<float>(height)});
}

/// An image of 10 x 10 points with a representation for each of the sizes.
NSImage imageOf(const std::vector<std::pair<std::uint32_t, std::uint32_t>>& sizes) {
    NSImage image({10, 10});
    for (const auto& [width, height] : sizes)
        image.addRepresentation(photoRep(width, height));
    return image;
}

void put(Bytes& file, std::uint32_t number, int bytes) {
    for (int i = 0; i < bytes; ++i)
        file.push_back(static_cast<std::uint8_t>(number >> (8 * i)));
}

/// A little-endian TIFF with a page of black pixels for each of the sizes. All pages share the pixels at the
/// end.
Bytes tiffOfPages(const std::vector<std::pair<std::uint32_t, std::uint32_t>>& sizes) {
    constexpr std::uint32_t header = 8, directory = 2 + 8 * 12 + 4, shortType = 3, longType = 4;
    const auto pixels = static_cast<std::uint32_t>(header + directory * sizes.size());
    Bytes file = {'I', 'I', 42, 0, header, 0, 0, 0};
    for (std::size_t page = 0; page < sizes.size(); ++page) {
        const auto [width, height] = sizes[page];
        const std::pair<std::uint32_t, std::uint32_t> entries[] = {
            {256, width}, {257, height}, {258, 8},      {259, 1},              // sides, bits, no compression
            {262, 1},     {273, pixels}, {278, height}, {279, width * height}, // black is 0, one strip
        };
        put(file, 8, 2);
        for (const auto& [tag, value] : entries) {
            put(file, tag, 2);
            put(file, tag == 273 || tag == 279 ? longType : shortType, 2);
            put(file, 1, 4);
            put(file, value, 4);
        }
        put(file, page + 1 == sizes.size() ? 0 : static_cast<std::uint32_t>(file.size() + 4), 4);
    }
    file.resize(pixels + 1000);
    return file;
}

/// A photo as a JPEG file that lacks its last tenth.
Bytes cutOffJPEG(std::uint32_t width, std::uint32_t height) {
    const PixelBuffer photo = makePhoto({width, height, ColorModel::rgb, false, SampleDepth::bits8});
    Bytes file =
        *encoded(jpeg::encode, *rowsOfPixels(std::make_shared<PixelBuffer>(photo)), {.quality = 0.9});
    file.resize(file.size() * 9 / 10);
    return file;
}

std::shared_ptr<NSImage> imageOfFile(const Bytes& file) {
    const testing::TemporaryFolder folder;
    return NSImage::initWithContentsOfFile(NSString::fromUTF8(folder.write("picture", file)));
}

PixelBuffer pixelsOf(const NSImage& image) { return *readPixels(image.representations().front()->picture()); }

} // namespace

TEST(NSImage, theBestRepresentationIsTheFirstWithTheMostPixels) {
    const NSImage image = imageOf({{4, 4}, {9, 2}, {3, 6}, {2, 9}, {17, 1}});
    EXPECT_EQ(image.bestRepresentation(), image.representations()[1]);
    EXPECT_EQ(NSImage({10, 10}).bestRepresentation(), nullptr);
}

TEST(NSImage, theBestRepresentationDoesNotDependOnSizesInPoints) {
    const NSImage image = imageOf({{4, 4}, {9, 9}});
    image.representations()[1]->setSize({1, 1});
    EXPECT_EQ(image.bestRepresentation(), image.representations()[1]);
}

TEST(NSImage, encodingUsesTheFirstRepresentationAndDrawingTheBest) {
    const NSImage image = imageOf({{4, 4}, {10, 10}});
    EXPECT_EQ(image.bitmapOfTIFFRepresentation()->pixelsWide(), 4);
    EXPECT_EQ(image.bitmapOfTIFFRepresentation()->size(), (NSSize{10, 10})) << "the size of the image";
    EXPECT_TRUE(samePicture(pixelsOf(*drawnImage({10, 10}, image)),
                            *readPixels(image.representations()[1]->picture())));
    EXPECT_EQ(NSImage({10, 10}).bitmapOfTIFFRepresentation(), nullptr);
}

TEST(NSImage, aMissingFileOrOneThatIsNoPictureGivesNoImage) {
    const testing::TemporaryFolder folder;
    for (const std::string& path : {folder.write("text.jpg", "no picture"), folder.write("empty.png", ""),
                                    folder / "absent.gif", folder.path().string()})
        EXPECT_EQ(NSImage::initWithContentsOfFile(NSString::fromUTF8(path)), nullptr) << path;
}

TEST(NSImage, theSizeInPointsOfALoadedImageFollowsFromItsResolution) {
    const testing::TemporaryFolder folder;
    const auto rows = rowsOfPixels(
        std::make_shared<PixelBuffer>(makePhoto({300, 200, ColorModel::gray, false, SampleDepth::bits8})));
    const std::string path = folder.write("a.png", *encoded(png::encode, *rows, {.resolution = {300, 150}}));
    const auto image = NSImage::initWithContentsOfFile(NSString::fromUTF8(path));
    EXPECT_EQ(image->size(), (NSSize{72, 96}));
    ASSERT_EQ(image->representations().size(), 1U);
    EXPECT_EQ(image->representations().front()->size(), (NSSize{72, 96}));
}

TEST(NSImage, thePagesOfAFileAreRepresentationsAndTheFirstIsTheBest) {
    const auto image = imageOfFile(tiffOfPages({{4, 3}, {20, 10}, {5, 5}}));
    ASSERT_EQ(image->representations().size(), 3U);
    EXPECT_EQ(image->size(), (NSSize{4, 3})) << "the size of the first page";
    EXPECT_EQ(image->representations()[1]->pixelsWide(), 20);
    EXPECT_EQ(image->representations()[2]->pixelsWide(), 5);
    EXPECT_EQ(image->bestRepresentation(), image->representations()[0]);
    EXPECT_EQ(image->bitmapOfTIFFRepresentation()->pixelsWide(), 4);
}

TEST(NSImage, afterAddingARepresentationTheBestIsTheOneWithTheMostPixels) {
    const auto image = imageOfFile(tiffOfPages({{4, 3}, {20, 10}}));
    image->addRepresentation(photoRep(2, 2));
    EXPECT_EQ(image->bestRepresentation(), image->representations()[1]);
}

TEST(NSImage, theFileMayBeRemovedAfterLoading) {
    const testing::TemporaryFolder folder;
    const PixelBuffer photo = makePhoto({12, 8, ColorModel::rgb, false, SampleDepth::bits8});
    const auto rows = rowsOfPixels(std::make_shared<PixelBuffer>(photo));
    const std::string path = folder.write("a.tif", *encoded(tiff::encode, *rows, {}));
    const auto image = NSImage::initWithContentsOfFile(NSString::fromUTF8(path));
    std::filesystem::remove(path);
    EXPECT_TRUE(samePicture(pixelsOf(*image), photo));
}

TEST(NSImage, keptPixelsOfSeveralRepresentationsAreDecodedOnceEach) {
    const NSImage image = imageOf({{4, 4}, {9, 9}});
    image.keepPixels();
    const std::uint64_t before = LocalSource::decodesStarted();
    for (int use = 0; use < 3; ++use)
        for (const auto& rep : image.representations())
            ASSERT_TRUE(readPixels(rep->picture()).ok());
    EXPECT_EQ(LocalSource::decodesStarted() - before, 2U);
}

TEST(NSImage, theTIFFRepresentationHasTheFirstRepresentationAndItsProfile) {
    const PixelBuffer photo = makePhoto({12, 8, ColorModel::rgb, true, SampleDepth::bits16});
    const ColorProfile profile = ColorProfile::adobeRGB();
    const auto rows = rowsOfPixels(std::make_shared<PixelBuffer>(photo));
    NSImage image({6, 8});
    image.addRepresentation(std::make_shared<NSBitmapImageRep>(
        Picture{
            *LocalSource::open(readerOfBytes(*encoded(tiff::encode, *rows, {.profile = &profile}))), 0, {}},
        NSSize{1, 1}));
    const auto source = *LocalSource::open(readerOfBytes(image.TIFFRepresentation()->bytes()));
    EXPECT_TRUE(samePicture(*readPixels({source, 0, {}}), photo));
    EXPECT_EQ(source->frames().front().profile, profile);
    EXPECT_EQ(source->frames().front().resolution, (Resolution{144, 72})) << "from the size of the image";
    EXPECT_EQ(NSImage({6, 8}).TIFFRepresentation(), nullptr);
}

TEST(Drawing, theSidesOfACanvasAreRoundedToWholePixels) {
    const NSImage image = imageOf({{20, 20}});
    const struct {
        float points;
        int pixels;
    } rows[] = {{0.1F, 1}, {0.5F, 1}, {1.49F, 1}, {1.5F, 2}, {2.5F, 3}, {6.5F, 7}, {33.3F, 33}, {20, 20}};
    for (const auto& row : rows) {
        const auto drawn = drawnImage({row.points, 20}, image);
        EXPECT_EQ(drawn->size(), (NSSize{row.points, 20}));
        EXPECT_EQ(drawn->representations().front()->pixelsWide(), row.pixels) << row.points;
        EXPECT_EQ(drawnImage({20, row.points}, image)->representations().front()->pixelsHigh(), row.pixels);
    }
}

TEST(Drawing, aCanvasOfZeroOrInvalidSizeStaysEmpty) {
    const NSImage image = imageOf({{20, 20}});
    const float infinite = std::numeric_limits<float>::infinity();
    for (const NSSize size : {NSSize{0, 5}, {5, 0}, {-3, 5}, {std::nanf(""), 5}, {5, infinite}, {5, 1.1e6F}})
        EXPECT_TRUE(drawnImage(size, image)->representations().empty()) << size.width << " x " << size.height;
}

TEST(Drawing, anImageWithoutRepresentationsLeavesTheCanvasTransparent) {
    const auto drawn = drawnImage({5.4F, 3}, NSImage({10, 10}));
    EXPECT_TRUE(
        samePicture(pixelsOf(*drawn), testing::makePicture({5, 3, ColorModel::rgb, true, SampleDepth::bits8},
                                                           [](auto, auto, auto) { return 0U; })));
    EXPECT_TRUE(drawnImage({0, 3}, NSImage({10, 10}))->representations().empty());
}

TEST(Drawing, aSecondDrawingOfTheSameFractionalSizeIsAPixelCopy) {
    const auto once = drawnImage({33.3F, 7.6F}, imageOf({{100, 30}}));
    const auto twice = drawnImage(once->size(), *once);
    EXPECT_TRUE(samePicture(pixelsOf(*twice), pixelsOf(*once)));
}

TEST(Drawing, aTurnedPictureFillsTheCanvas) {
    const NSImage image = imageOf({{20, 10}});
    const auto drawn = drawnImage({10, 20}, image, {.turn = QuarterTurn::clockwise});
    EXPECT_EQ(sampleAt(pixelsOf(*drawn), 9, 0, 1), sampleAt(pixelsOf(image), 0, 0, 1));
    EXPECT_EQ(sampleAt(pixelsOf(*drawn), 0, 19, 1), sampleAt(pixelsOf(image), 19, 9, 1));
}

TEST(Drawing, drawingOnWhiteRemovesAlpha) {
    const NSImage image = imageOf({{20, 10}});
    const auto faded = drawnImage({20, 10}, image, {.fraction = 0.5F});
    EXPECT_TRUE(pixelsOf(*faded).format.hasAlpha);
    const PixelBuffer flat = pixelsOf(*drawnImage({20, 10}, *faded, {.onWhite = true}));
    EXPECT_FALSE(flat.format.hasAlpha);
    EXPECT_NEAR(sampleAt(flat, 5, 5, 0), sampleAt(pixelsOf(image), 5, 5, 0) * 0.5 + 127.5, 1);
    const PixelBuffer atOnce = pixelsOf(*drawnImage({20, 10}, image, {.onWhite = true, .fraction = 0.5F}));
    EXPECT_TRUE(samePicture(atOnce, flat));
}

TEST(NSImageDamage, isKnownAfterDecodingTheDamagedRows) {
    const auto image = imageOfFile(cutOffJPEG(60, 80));
    EXPECT_FALSE(image->damage());
    pixelsOf(*image);
    ASSERT_TRUE(image->damage());
    EXPECT_EQ(image->damage()->reason, Reason::truncated);
}

TEST(NSImageDamage, isSharedByAllImagesMadeFromTheFile) {
    const auto image = imageOfFile(cutOffJPEG(60, 80));
    const auto small = drawnImage({6, 8}, *image, {.turn = QuarterTurn::clockwise});
    pixelsOf(*small);
    EXPECT_TRUE(small->damage());
    EXPECT_TRUE(image->damage());
}

TEST(NSImageDamage, isFoundWhenAnotherThreadDecodesAndWhenPixelsAreKept) {
    for (const bool keeps : {false, true}) {
        const auto image = imageOfFile(cutOffJPEG(640, 400));
        if (keeps)
            image->keepPixels();
        for (int result = 0; result < 2; ++result)
            pixelsOf(*drawnImage({50, 40}, *image));
        EXPECT_TRUE(image->damage()) << keeps;
    }
}

TEST(NSImageDamage, aCompleteFileAndAnEmptyImageHaveNone) {
    const auto image = imageOfFile(tiffOfPages({{3, 3}}));
    pixelsOf(*image);
    EXPECT_FALSE(image->damage());
    EXPECT_FALSE(NSImage({10, 10}).damage());
}

} // namespace kestrine
