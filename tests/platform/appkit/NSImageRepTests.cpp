#include "platform/appkit/NSImageRep.h"

#include "platform/foundation/NSNumber.h"
#include "platform/imageio/Codecs.h"
#include "platform/imageio/LocalSource.h"
#include "tests/support/Pictures.h"
#include "tests/support/TemporaryFolder.h"

#include <algorithm>
#include <cstring>
#include <gmock/gmock.h>

namespace kestrine {

using testing::makePhoto;
using testing::makePicture;
using testing::samePicture;

namespace {

using Reps = std::vector<std::shared_ptr<NSBitmapImageRep>>;

/// The representations of a file with these bytes.
Reps repsOf(const Bytes& file) {
    const testing::TemporaryFolder folder;
    return NSBitmapImageRep::imageRepsWithContentsOfFile(NSString::fromUTF8(folder.write("a", file)));
}

Bytes encoded(const PixelBuffer& pixels, Encoder encode, const EncodingOptions& options = {}) {
    const auto rows = rowsOfPixels(std::make_shared<PixelBuffer>(pixels));
    return *kestrine::encoded(encode, *rows, options);
}

PixelBuffer photo() { return makePhoto({20, 10, ColorModel::rgb, false, SampleDepth::bits8}); }

NSBitmapImageRep bitmapOf(const PixelBuffer& pixels, NSSize size) {
    return {Picture{*LocalSource::open(readerOfBytes(encoded(pixels, tiff::encode))), 0, {}}, size};
}

std::unique_ptr<ImageDecoder> decoderOf(const std::shared_ptr<const NSData>& file) {
    return *openImage(readerOfBytes(file->bytes()));
}

} // namespace

TEST(NSBitmapImageRep, aFileThatIsNoPictureHasNoRepresentations) {
    EXPECT_TRUE(repsOf({}).empty());
    EXPECT_TRUE(repsOf(testing::bytesOf("no picture at all")).empty());
    EXPECT_TRUE(NSBitmapImageRep::imageRepsWithContentsOfFile(u"/nowhere/a.jpg").empty());
}

TEST(NSBitmapImageRep, itsOnlyPropertiesAreProfileEXIFAndColourTable) {
    const ColorProfile profile = ColorProfile::adobeRGB();
    const Bytes exif = {'M', 'M', 0, 42, 0, 0,   0,   8,   0, 1, 0x01, 0x0F, 0,
                        2,   0,   0, 0,  4, 'C', 'a', 'm', 0, 0, 0,    0,    0};
    const auto jpeg = repsOf(encoded(photo(), jpeg::encode, {.profile = &profile, .exif = exif})).front();
    const auto bytesOf = [](const Object& data) { return dynamic_cast<const NSData&>(*data).bytes(); };
    EXPECT_TRUE(
        std::ranges::equal(bytesOf(jpeg->valueForProperty(NSImageColorSyncProfileData)), profile.bytes()));
    EXPECT_EQ(bytesOf(jpeg->valueForProperty(NSImageEXIFData)), exif);
    EXPECT_EQ(jpeg->valueForProperty(NSImageRGBColorTable), nullptr);
    EXPECT_EQ(jpeg->valueForProperty(u"NSImageGamma"), nullptr);
    const auto gif = repsOf(encoded(photo(), gif::encode)).front();
    EXPECT_EQ(bytesOf(gif->valueForProperty(NSImageRGBColorTable)).size() % 3, 0U);
    EXPECT_EQ(gif->valueForProperty(NSImageColorSyncProfileData), nullptr);
}

TEST(NSBitmapImageRep, aDrawnPictureKeepsTheProfileButNotEXIFOrColourTable) {
    const auto gif = repsOf(encoded(photo(), gif::encode)).front();
    const NSBitmapImageRep drawn(gif->picture().with(QuarterTurn::clockwise), {10, 20});
    EXPECT_EQ(drawn.valueForProperty(NSImageRGBColorTable), nullptr);
    const ColorProfile profile = ColorProfile::adobeRGB();
    const Bytes exif = {'M', 'M', 0, 42, 0, 0, 0, 8, 0, 0};
    const auto jpeg = repsOf(encoded(photo(), jpeg::encode, {.profile = &profile, .exif = exif})).front();
    const NSBitmapImageRep faded(jpeg->picture().with(Fade{0.5F}), {20, 10});
    EXPECT_NE(jpeg->valueForProperty(NSImageEXIFData), nullptr);
    EXPECT_EQ(faded.valueForProperty(NSImageEXIFData), nullptr);
    EXPECT_NE(faded.valueForProperty(NSImageColorSyncProfileData), nullptr);
}

TEST(NSBitmapImageRep, everyFileTypeStoresThePixelsAndTheResolution) {
    const NSBitmapImageRep bitmap = bitmapOf(photo(), {10, 10});
    for (const FileType type : {FileType::tiff, FileType::png, FileType::jpeg, FileType::gif}) {
        const auto file = bitmap.representationUsingType(type, {});
        ASSERT_NE(file, nullptr);
        const FrameDescription frame = decoderOf(file)->frames().front();
        EXPECT_EQ(frame.format.width, 20U);
        // A GIF cannot store it.
        EXPECT_EQ(frame.resolution, type == FileType::gif ? Resolution{} : (Resolution{144, 72}));
    }
}

TEST(NSBitmapImageRep, anInvalidOrUnsuitableProfileIsLeftOut) {
    const NSBitmapImageRep bitmap = bitmapOf(photo(), {20, 10});
    const auto gray = ColorProfile::fromGamma(2, {}, ColorModel::gray);
    const Object values[] = {std::make_shared<NSData>(testing::bytesOf("none")),
                             std::make_shared<NSData>(Bytes(gray->bytes().begin(), gray->bytes().end())),
                             std::make_shared<NSNumber>(1)};
    for (const Object& value : values) {
        const auto file =
            bitmap.representationUsingType(FileType::png, {{NSImageColorSyncProfileData, value}});
        ASSERT_NE(file, nullptr);
        EXPECT_EQ(decoderOf(file)->frames().front().profile, std::nullopt);
    }
}

TEST(NSBitmapImageRep, itsSizeInPointsCanChangeButNotItsPixels) {
    NSBitmapImageRep bitmap = bitmapOf(photo(), {20, 10});
    bitmap.setSize({5, 5});
    EXPECT_EQ(bitmap.size(), (NSSize{5, 5}));
    EXPECT_EQ(bitmap.pixelsWide(), 20);
    EXPECT_EQ(bitmap.pixelsHigh(), 10);
}

TEST(NSBitmapImageRep, itsDataIsMultipliedByAlphaInBothDepths) {
    const auto half = [](SampleDepth depth, unsigned alpha, unsigned color) {
        return makePicture({3, 2, ColorModel::gray, true, depth},
                           [=](auto x, auto, std::size_t c) { return c == 1 ? alpha : x * color; });
    };
    EXPECT_EQ(bitmapOf(half(SampleDepth::bits8, 128, 100), {3, 2}).bitmapData()->bytes(),
              (Bytes{0, 128, 50, 128, 100, 128, 0, 128, 50, 128, 100, 128}));
    const auto wide = bitmapOf(half(SampleDepth::bits16, 0x8000, 0x4000), {3, 2}).bitmapData();
    ASSERT_EQ(wide->length(), 24U);
    std::uint16_t samples[6];
    std::memcpy(samples, wide->bytes().data(), sizeof samples);
    EXPECT_THAT(samples, ::testing::ElementsAre(0, 0x8000, 0x2000, 0x8000, 0x4000, 0x8000));
}

TEST(NSBitmapImageRep, withoutAlphaItsDataHasTheSamplesUnchanged) {
    EXPECT_EQ(bitmapOf(photo(), {20, 10}).bitmapData()->bytes(), photo().bytes);
}

TEST(NSBitmapImageRep, pixelsThatCannotBeReadGiveNoDataAndNoFile) {
    Bytes file = encoded(photo(), png::encode);
    file.resize(file.size() / 2);
    const Reps reps = repsOf(file);
    ASSERT_EQ(reps.size(), 1U) << "its header is complete";
    EXPECT_EQ(reps.front()->bitmapData(), nullptr);
    EXPECT_EQ(reps.front()->representationUsingType(FileType::png, {}), nullptr);
}

} // namespace kestrine
