#include "platform/imageio/KeptMetadata.h"

#include "platform/host/BigEndian.h"
#include "platform/imageio/Codecs.h"
#include "tests/support/ExifBuilder.h"
#include "tests/support/Pictures.h"

namespace kestrine {
namespace {

using testing::exifBlock;
using testing::exifText;

RowSourcePointer photo() {
    return rowsOfPixels(std::make_shared<PixelBuffer>(
        testing::makePhoto({20, 10, ColorModel::rgb, false, SampleDepth::bits8})));
}

/// What files with this EXIF block hold; "none" is a result without EXIF data.
std::string selectionsFor(const Bytes& file) {
    const Bytes answer = *metadataOf(readerOfBytes(file));
    std::string names;
    const std::pair<std::optional<ExifSelection>, const char*> rows[] = {
        {std::nullopt, "none "},
        {ExifSelection::rights, "rights "},
        {ExifSelection::withoutOwner, "exif "},
        {ExifSelection::camera, "camera "}};
    for (const auto& [selection, name] : rows)
        if (holdsNoMoreThan(selection, answer))
            names += name;
    return names;
}

Bytes jpegWith(const testing::ExifContent& content, ExifSelection selection) {
    const Bytes block = carriedExif(exifBlock(content), {20, 10}, selection);
    return *encoded(jpeg::encode, *photo(), {.quality = 0.9, .exif = block});
}

/// A file with the block as it is.
Bytes jpegWith(const testing::ExifContent& content) {
    return *encoded(jpeg::encode, *photo(), {.quality = 0.9, .exif = exifBlock(content)});
}

/// The file with these bytes after the first `position` bytes.
Bytes withInserted(Bytes file, std::ptrdiff_t position, const Bytes& inserted) {
    file.insert(file.begin() + position, inserted.begin(), inserted.end());
    return file;
}

TEST(KeptMetadata, aFileWithoutAnyHoldsNoMoreThanAnyResult) {
    EXPECT_EQ(selectionsFor(*encoded(jpeg::encode, *photo(), {.quality = 0.9})), "none rights exif camera ");
    EXPECT_EQ(selectionsFor(*encoded(png::encode, *photo(), {})), "none rights exif camera ");
}

TEST(KeptMetadata, exifMustBeWhatASelectionKeeps) {
    const testing::ExifContent everything{.ifd0 = {exifText(0x010f, "Kappa"), exifText(0x8298, "(c) Ann")},
                                          .exifSubIFD = {exifText(0xa431, "12345")},
                                          .gpsIFD = {exifText(1, "N")}};
    EXPECT_EQ(selectionsFor(jpegWith(everything, ExifSelection::all)), "");
    EXPECT_EQ(selectionsFor(jpegWith(everything, ExifSelection::camera)), "camera ");
    EXPECT_EQ(selectionsFor(jpegWith(everything, ExifSelection::withoutOwner)), "exif camera ");
    EXPECT_EQ(selectionsFor(jpegWith(everything, ExifSelection::rights)), "rights exif camera ");
}

TEST(KeptMetadata, exifNeedNotBeWrittenAsResultsHaveIt) {
    using namespace testing;
    for (const ExifOrder order : {ExifOrder::bigEndian, ExifOrder::littleEndian})
        EXPECT_EQ(selectionsFor(jpegWith({.order = order,
                                          .ifd0 = {exifText(0x010f, "Kappa"), exifRationals(0x011a, {72, 1})},
                                          .exifSubIFD = {exifText(0x9003, "2024:06:01 18:30:05")}})),
                  "exif camera ");
}

TEST(KeptMetadata, thumbnailsAndNotesOfTheCameraAreMore) {
    using namespace testing;
    const ExifField maker = exifText(0x010f, "Kappa");
    EXPECT_EQ(selectionsFor(jpegWith({.ifd0 = {maker}, .ifd1 = {exifShorts(0x0103, {6})}})), "");
    EXPECT_EQ(selectionsFor(jpegWith({.ifd0 = {maker}, .exifSubIFD = {exifBytes(0x927c, {1, 2, 3, 4, 5})}})),
              "");
    EXPECT_EQ(selectionsFor(jpegWith({.ifd0 = {maker, exifText(0x9999, "unknown")}})), "");
}

TEST(KeptMetadata, otherSegmentsAndChunksAreMore) {
    const Bytes jpeg = *encoded(jpeg::encode, *photo(), {.quality = 0.9});
    constexpr std::ptrdiff_t afterJFIF = 20;
    for (const std::uint8_t marker : Bytes{0xe1, 0xe2, 0xed, 0xfe, 0xef})
        EXPECT_EQ(selectionsFor(withInserted(jpeg, afterJFIF, {0xff, marker, 0, 4, 'x', 'y'})), "")
            << int{marker};
    EXPECT_EQ(selectionsFor(withInserted(jpeg, afterJFIF, {0xff, 0xee, 0, 4, 'x', 'y'})),
              "none rights exif camera ");
}

TEST(KeptMetadata, aSecondExifBlockIsMore) {
    const Bytes jpeg = jpegWith({.ifd0 = {exifText(0x010f, "Kappa")}});
    constexpr std::ptrdiff_t afterJFIF = 20;
    EXPECT_NE(selectionsFor(jpeg), "");
    EXPECT_EQ(selectionsFor(withInserted(jpeg, afterJFIF, testing::exifSegment(exifBlock({})))), "");
    const Bytes bare = *encoded(jpeg::encode, *photo(), {.quality = 0.9});
    EXPECT_EQ(selectionsFor(withInserted(bare, afterJFIF, testing::exifSegment(Bytes{'x', 'y'}))), "");
}

TEST(KeptMetadata, aThumbnailInTheJFIFSegmentIsMore) {
    Bytes jpeg = *encoded(jpeg::encode, *photo(), {.quality = 0.9});
    constexpr std::size_t lengthAt = 5, sidesAt = 18;
    ASSERT_EQ(jpeg.at(lengthAt), 16);
    jpeg[lengthAt] = 19;
    jpeg[sidesAt] = jpeg[sidesAt + 1] = 1;
    EXPECT_EQ(selectionsFor(withInserted(jpeg, sidesAt + 2, {10, 20, 30})), "");
}

TEST(KeptMetadata, anExifChunkThatIsNotDeliveredIsMore) {
    const Bytes block = exifBlock({.ifd0 = {exifText(0x010f, "Kappa")}});
    const Bytes png = *encoded(png::encode, *photo(), {.exif = block});
    EXPECT_NE(selectionsFor(png), "");
    constexpr std::ptrdiff_t afterHeader = 8 + 25;
    const auto chunk = [](const Bytes& content) {
        Bytes bytes;
        appendBigEndian(bytes, content.size(), 4);
        for (const char c : {'e', 'X', 'I', 'f'})
            bytes.push_back(static_cast<std::uint8_t>(c));
        bytes.insert(bytes.end(), content.begin(), content.end());
        appendBigEndian(bytes, 0, 4);
        return bytes;
    };
    EXPECT_EQ(selectionsFor(withInserted(png, afterHeader, chunk(block))), "") << "a second one";
    const Bytes bare = *encoded(png::encode, *photo(), {});
    EXPECT_EQ(selectionsFor(withInserted(bare, afterHeader, chunk(Bytes(2 << 20)))), "") << "a large one";
}

TEST(KeptMetadata, entriesThatCannotBeReadAreMore) {
    const testing::ExifField unknown{0x010e, 99, 1, {1, 2, 3, 4}};
    EXPECT_EQ(selectionsFor(jpegWith({.ifd0 = {exifText(0x010f, "Kappa"), unknown}})), "");
}

TEST(KeptMetadata, whatFollowsThePictureIsMore) {
    Bytes jpeg = *encoded(jpeg::encode, *photo(), {.quality = 0.9}),
          png = *encoded(png::encode, *photo(), {});
    jpeg.push_back(0);
    png.push_back(0);
    EXPECT_EQ(selectionsFor(jpeg), "");
    EXPECT_EQ(selectionsFor(png), "");
}

TEST(KeptMetadata, segmentsBetweenScansAreMore) {
    const Bytes file = *encoded(jpeg::encode, *photo(), {.quality = 0.9, .isProgressive = true});
    EXPECT_EQ(selectionsFor(file), "none rights exif camera ");
    const Bytes startOfScan{0xff, 0xda};
    const auto last = std::ranges::find_end(file, startOfScan).begin();
    EXPECT_EQ(selectionsFor(withInserted(file, last - file.begin(), {0xff, 0xfe, 0, 4, 'x', 'y'})), "");
}

TEST(KeptMetadata, filesOfOtherFormatsAreTakenToHoldMore) {
    EXPECT_EQ(selectionsFor(*encoded(tiff::encode, *photo(), {})), "");
}

} // namespace
} // namespace kestrine
