// The resolution, the EXIF block and the number of frames of PNG files.
#include "tests/platform/imageio/Decoded.h"
#include "tests/platform/imageio/png/PNGFile.h"
#include "tests/platform/imageio/png/PNGRecipe.h"
#include "tests/support/ExifBuilder.h"

namespace kestrine::testing {

namespace {

/// XResolution and YResolution.
const std::vector<ExifField> resolution300 = {exifRationals(0x011A, {300, 1}),
                                              exifRationals(0x011B, {300, 1})};

} // namespace

TEST(PNGMetadata, roundedPixelsPerMetreBecomeWholePixelsPerInch) {
    struct Case {
        png_uint_32 perMeter;
        double perInch;
    };
    for (const Case& c :
         {Case{2835, 72}, {5669, 144}, {11811, 300}, {2900, 2900 * 0.0254}, {0, 72}, {10, 72}}) {
        PNGFile file;
        file.before = [&](auto png, auto info) {
            png_set_pHYs(png, info, c.perMeter, 11811, PNG_RESOLUTION_METER);
        };
        EXPECT_EQ(decodeSound(png::codec, file.make()).frame().resolution, (Resolution{c.perInch, 300}));
    }
}

TEST(PNGMetadata, anAspectRatioIsNotAResolution) {
    PNGFile file;
    file.before = [](auto png, auto info) { png_set_pHYs(png, info, 11811, 11811, PNG_RESOLUTION_UNKNOWN); };
    EXPECT_EQ(decodeSound(png::codec, file.make()).frame().resolution, Resolution{});
}

TEST(PNGMetadata, exifBeforeOrAfterThePixelsIsFound) {
    const Bytes file = PNGFile{}.make(), exif = exifBlock({.ifd0 = resolution300});
    EXPECT_EQ(decodeSound(png::codec, withChunk(file, "eXIf", exif)).exif, exif);
    EXPECT_EQ(decodeSound(png::codec, withLateChunk(file, "eXIf", exif)).exif, exif);
    EXPECT_TRUE(decodeSound(png::codec, file).exif.empty());
}

TEST(PNGMetadata, exifAfterThePixelsSaysTheOrientationButNotTheResolution) {
    std::vector<ExifField> fields = resolution300;
    fields.push_back(exifShorts(0x0112, {6}));
    const Bytes file = withLateChunk(PNGFile{}.make(), "eXIf", exifBlock({.ifd0 = fields}));
    const FrameDescription frame = decodeSound(png::codec, file).frame();
    EXPECT_EQ(frame.orientation, 6);
    EXPECT_EQ(frame.resolution, Resolution{});
}

TEST(PNGMetadata, theResolutionOfExifOverridesPixelsPerMetre) {
    const Bytes exif = exifBlock({.ifd0 = resolution300});
    PNGFile file;
    EXPECT_EQ(decodeSound(png::codec, withChunk(file.make(), "eXIf", exif)).frame().resolution,
              (Resolution{300, 300}));
    file.before = [](auto png, auto info) { png_set_pHYs(png, info, 5669, 5669, PNG_RESOLUTION_METER); };
    EXPECT_EQ(decodeSound(png::codec, withChunk(file.make(), "eXIf", exif)).frame().resolution,
              (Resolution{300, 300}));
}

TEST(PNGMetadata, theFirstOfTwoExifBlocksCounts) {
    const Bytes first = exifBlock({.ifd0 = {exifShorts(0x0112, {6})}});
    const Bytes second = exifBlock({.ifd0 = {exifShorts(0x0112, {8})}});
    const Bytes file = PNGFile{}.make();
    for (const Bytes& both : {withChunk(withChunk(file, "eXIf", second), "eXIf", first),
                              withChunk(withLateChunk(file, "eXIf", second), "eXIf", first),
                              withLateChunk(withLateChunk(file, "eXIf", first), "eXIf", second)}) {
        const Decoded decoded = decodeSound(png::codec, both);
        EXPECT_EQ(decoded.exif, first);
        EXPECT_EQ(decoded.frame().orientation, 6);
    }
}

TEST(PNGMetadata, anExifBlockOfMoreThanOneMiBIsPassedOver) {
    Bytes exif = exifBlock({.ifd0 = resolution300});
    const Bytes file = withChunk(PNGFile{}.make(), "eXIf", exif);
    exif.resize(1 << 20);
    EXPECT_EQ(decodeSound(png::codec, withChunk(file, "eXIf", exif)).exif, exif);
    exif.push_back(0);
    EXPECT_EQ(decodeSound(png::codec, withChunk(file, "eXIf", exif)).exif,
              exifBlock({.ifd0 = resolution300}));
}

TEST(PNGMetadata, anEmptyExifChunkBeforeThePixelsDoesNotHideTheOneAfterThem) {
    const Bytes exif = exifBlock({.ifd0 = resolution300});
    const Bytes file = withLateChunk(PNGFile{}.make(), "eXIf", exif);
    EXPECT_EQ(decodeSound(png::codec, withChunk(file, "eXIf", {})).exif, exif);
}

TEST(PNGMetadata, anAnimationTellsHowManyFramesItHas) {
    const Bytes file = PNGFile{}.make(), control{0, 0, 1, 2, 0, 0, 0, 0}; // frames and repetitions
    EXPECT_EQ(decodeSound(png::codec, file).contents, FileContents{});
    EXPECT_EQ(decodeSound(png::codec, withChunk(file, "acTL", control)).contents,
              (FileContents{FileContents::Kind::animation, 258}));
    EXPECT_EQ(decodeSound(png::codec, withLateChunk(file, "acTL", control)).contents, FileContents{});
}

} // namespace kestrine::testing
