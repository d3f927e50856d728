// Camera raw files. The corpus of the fuzzer, which names what its files show, has sensors of 48 x 32 pixels.
#include "tests/platform/imageio/Decoded.h"
#include "tests/platform/imageio/tiff/TIFFRecipe.h"
#include "tests/support/Pictures.h"
#include "tests/support/SourceFolder.h"
#include "tests/support/TemporaryFolder.h"

#include "platform/coregraphics/RowStages.h"
#include "platform/imageio/LocalSource.h"
#include "platform/imageio/exif/ExifFacts.h"
#include "platform/imageio/raw/Header.h"
#include "platform/imageio/raw/Library.h"

#include <algorithm>

namespace kestrine::testing {

namespace {

Bytes corpusFile(const std::string& name) { return readFileBytes(inSourceFolder("fuzz/corpus/raw/" + name)); }

/// Opens the file as programs do.
OpenedImage openedRaw(const Bytes& file) {
    Result<OpenedImage> opened = openWithKnownCodec(readerOfBytes(file));
    if (!opened) {
        ADD_FAILURE() << opened.failure().text;
        return {};
    }
    return std::move(*opened);
}

struct Shown {
    FrameDescription frame;
    PixelBuffer pixels; ///< before the quarter turns
};

Shown shown(const std::string& name, int halvings = 0) {
    const OpenedImage opened = openedRaw(corpusFile(name));
    if (opened.decoder == nullptr)
        return {};
    EXPECT_EQ(opened.codec, &raw::codec) << name;
    EXPECT_EQ(opened.decoder->contents(), FileContents{FileContents::Kind::raw});
    Result<RowSourcePointer> rows = opened.decoder->rows(0, halvings);
    if (!rows) {
        ADD_FAILURE() << rows.failure().text;
        return {};
    }
    return {opened.decoder->frames().front(), *readAllRows(**rows)};
}

/// The average of the blue samples minus that of the red ones, in the left half. The scene has more blue than
/// red there, the previews have more red.
double bluenessOnTheLeft(const PixelBuffer& pixels) {
    double sum = 0;
    const std::uint32_t half = pixels.format.width / 2;
    for (std::uint32_t y = 0; y < pixels.format.height; ++y)
        for (std::uint32_t x = 0; x < half; ++x)
            sum += static_cast<double>(sampleAt(pixels, x, y, 2))
                   - static_cast<double>(sampleAt(pixels, x, y, 0));
    return sum / half / pixels.format.height;
}

using Size = std::pair<std::uint32_t, std::uint32_t>;

Size sizeOf(const FrameDescription& frame) { return {frame.format.width, frame.format.height}; }

} // namespace

TEST(RawDecoder, aPreviewOfFullSizeIsThePicture) {
    for (const char* name :
         {"large-preview.dng", "large-preview.cr2", "large-preview.arw", "large-preview.pef",
          "large-preview.rw2", "large-preview.orf", "large-preview.cr3"}) {
        SCOPED_TRACE(name);
        const Shown file = shown(name);
        EXPECT_EQ(sizeOf(file.frame), Size(46, 30));
        EXPECT_EQ(file.frame.format.depth, SampleDepth::bits8);
        EXPECT_EQ(file.frame.maxHalvings, 3);
        EXPECT_LT(bluenessOnTheLeft(file.pixels), -20);
    }
}

TEST(RawDecoder, aSmallerPreviewIsNeverShown) {
    for (const char* name : {"developed.dng", "developed-linear.dng", "small-preview.dng"}) {
        SCOPED_TRACE(name);
        const Shown file = shown(name);
        EXPECT_EQ(sizeOf(file.frame), Size(48, 32));
        EXPECT_EQ(file.frame.format.depth, SampleDepth::bits16);
        EXPECT_EQ(file.frame.profile, ColorProfile::sRGB());
        EXPECT_GT(bluenessOnTheLeft(file.pixels), 2000);
    }
    EXPECT_FALSE(openWithKnownCodec(readerOfBytes(corpusFile("small-preview.cr2"))).ok());
}

TEST(RawDecoder, ninetyPercentOfBothSidesAreFullSize) {
    EXPECT_TRUE(raw::isLargeEnough({90, 45}, {100, 50}));
    EXPECT_TRUE(raw::isLargeEnough({45, 90}, {100, 50}));
    EXPECT_FALSE(raw::isLargeEnough({89, 50}, {100, 50}));
    EXPECT_FALSE(raw::isLargeEnough({100, 44}, {100, 50}));
}

TEST(RawDecoder, aPageOfFullSizeThatIsNoJPEGFileIsThePicture) {
    TIFFRecipe sensor{.width = 40, .height = 40, .bits = 16, .samples = 1, .photometric = 32803};
    const TIFFRecipe page{.width = 38, .height = 38, .subPages = {sensor}};
    const OpenedImage opened = openedRaw(makeTIFF(page));
    ASSERT_NE(opened.decoder, nullptr);
    EXPECT_EQ(opened.codec, &raw::codec);
    EXPECT_EQ(sizeOf(opened.decoder->frames().front()), Size(38, 38));
    EXPECT_EQ(sampleAt(*readAllRows(**opened.decoder->rows(0, 0)), 8, 1, 0), 13u * 8 + 29);
}

TEST(RawDecoder, theOrientationOfTheFileIsApplied) {
    struct Case {
        const char* name;
        int quarterTurns;
        Size size;
    };
    for (const Case& c : {Case{"developed-turned.dng", 1, {32, 48}},
                          {"large-preview-turned.nef", 1, {30, 46}},
                          {"large-preview-turned.raf", 3, {30, 46}},
                          {"large-preview-turned-already.nef", 0, {30, 46}},
                          {"large-preview-mirrored.dng", 3, {30, 46}},
                          {"developed-mirrored.dng", 0, {48, 32}}}) {
        SCOPED_TRACE(c.name);
        const Shown file = shown(c.name);
        EXPECT_EQ(file.frame.quarterTurns, c.quarterTurns);
        EXPECT_EQ(sizeOf(file.frame), c.size);
        EXPECT_EQ(file.frame.orientation, 1);
    }
}

TEST(RawDecoder, aMirroredOrientationMirrorsTheRows) {
    const auto mirrored = [](const char* name) {
        auto pixels = std::make_shared<PixelBuffer>(shown(name).pixels);
        return *readAllRows(*mirroredRows(rowsOfPixels(pixels)));
    };
    EXPECT_TRUE(samePicture(mirrored("developed-mirrored.dng"), shown("developed.dng").pixels));
    EXPECT_TRUE(samePicture(mirrored("large-preview-mirrored.dng"), shown("large-preview.dng").pixels));
}

TEST(RawDecoder, theExifOfTheFileIsUpright) {
    for (const char* name :
         {"developed-turned.dng", "large-preview.dng", "large-preview-turned.nef", "large-preview.cr2",
          "large-preview.rw2", "large-preview-turned.raf", "large-preview.cr3"}) {
        const OpenedImage opened = openedRaw(corpusFile(name));
        ASSERT_NE(opened.decoder, nullptr) << name;
        const Bytes exif = *opened.decoder->exif();
        EXPECT_EQ(dateTakenIn(exif), "2024:06:01 18:30:05") << name;
        EXPECT_EQ(readExifFacts(exif).orientation, 1) << name;
    }
}

TEST(RawDecoder, halfTheSizeIsDevelopedFromFourPixelsEach) {
    const Shown whole = shown("developed.dng"), half = shown("developed.dng", 1);
    ASSERT_EQ(whole.frame.maxHalvings, 1);
    ASSERT_EQ(half.pixels.format.width, 24u);
    ASSERT_EQ(half.pixels.format.height, 16u);
    for (std::uint32_t x = 3; x < 21; ++x)
        for (unsigned channel = 0; channel < 3; ++channel) {
            const double average =
                (sampleAt(whole.pixels, 2 * x, 15, channel) + sampleAt(whole.pixels, 2 * x + 1, 15, channel))
                / 2.0;
            EXPECT_NEAR(sampleAt(half.pixels, x, 7, channel), average, 1500) << x << " " << channel;
        }
    EXPECT_EQ(shown("developed-linear.dng").frame.maxHalvings, 0);
    EXPECT_EQ(shown("developed-mirrored.dng").frame.maxHalvings, 0);
}

TEST(RawDecoder, aFileThatEndsInTheDataOfTheSensorIsRefused) {
    Bytes file = corpusFile("developed.dng");
    const Bytes stripOffset = {0x11, 0x01, 4, 0, 1, 0, 0, 0};
    const auto near = static_cast<std::uint16_t>(file.size() - 1000);
    for (auto at = file.begin();
         (at = std::search(at, file.end(), stripOffset.begin(), stripOffset.end())) != file.end(); ++at) {
        at[8] = static_cast<std::uint8_t>(near);
        at[9] = static_cast<std::uint8_t>(near >> 8);
    }
    const OpenedImage opened = openedRaw(file);
    ASSERT_NE(opened.decoder, nullptr);
    const Result<PixelBuffer> pixels = readAllRows(**opened.decoder->rows(0, 0));
    ASSERT_FALSE(pixels.ok());
    EXPECT_EQ(pixels.failure().reason, Reason::truncated);
}

TEST(RawDecoder, aMissingLibraryIsReportedWithItsPackage) {
    const Result<raw::Functions> functions = raw::loadFunctions({"libraw_r.so.0"});
    ASSERT_FALSE(functions.ok());
    EXPECT_EQ(functions.failure().reason, Reason::unsupported);
    EXPECT_NE(functions.failure().text.find("libraw20"), std::string::npos);
    EXPECT_FALSE(raw::loadFunctions({"libm.so.6"}).ok());
}

TEST(RawDecoder, theCodecOfATIFFStructuredFileIsNotThatOfTIFF) {
    const auto source = LocalSource::open(readerOfBytes(corpusFile("developed.dng")));
    ASSERT_TRUE(source.ok());
    EXPECT_EQ((*source)->codec(), &raw::codec);
    EXPECT_EQ(tiff::codec.open(readerOfBytes(corpusFile("developed.dng"))).failure().reason,
              Reason::otherFormat);
}

} // namespace kestrine::testing
