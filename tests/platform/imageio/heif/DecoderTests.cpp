// Decodes the files in fuzz/corpus/heif, whose pictures fuzz/make_heif_corpus.py draws.
#include "platform/imageio/heif/AV1Library.h"
#include "platform/imageio/heif/HEVCLibrary.h"
#include "tests/platform/imageio/Decoded.h"
#include "tests/support/Pictures.h"
#include "tests/support/SourceFolder.h"
#include "tests/support/TemporaryFolder.h"

namespace kestrine::testing {

namespace {

constexpr std::size_t headBytes = 64;

Bytes corpusFile(const std::string& name) {
    return readFileBytes(inSourceFolder("fuzz/corpus/heif/" + name));
}

const ImageCodec& codecOf(const Bytes& file) {
    return heif::avifCodec.recognises(ByteView(file).first(headBytes)) ? heif::avifCodec : heif::heicCodec;
}

Decoded decoded(const std::string& name) {
    const Bytes file = corpusFile(name);
    return decodeSound(codecOf(file), file);
}

std::unique_ptr<ImageDecoder> opened(const std::string& name) {
    const Bytes file = corpusFile(name);
    auto decoder = codecOf(file).open(readerOfBytes(file));
    EXPECT_TRUE(decoder);
    return decoder ? std::move(*decoder) : nullptr;
}

/// The ramps that most files show. The alpha channel, if there is one, is given.
PixelBuffer ramps(RowFormat format, unsigned left = 0, unsigned top = 0, unsigned alpha = 255) {
    return makePicture(format, [=](unsigned x, unsigned y, std::size_t channel) {
        const unsigned u = x + left, v = y + top;
        const unsigned samples[] = {3 * u % 256, 5 * v % 256, (2 * u + v) % 256, alpha};
        return samples[channel];
    });
}

constexpr RowFormat square{.width = 64, .height = 64};

/// heif-enc stores YCbCr even without loss.
constexpr unsigned roundingOfYCbCr = 1;

struct Exact {
    const char* name;
    RowFormat format;
    unsigned tolerance;
};

} // namespace

TEST(HEIFDecoder, losslessPicturesHaveTheirPixelsWhereverTheDataLie) {
    constexpr RowFormat grid{.width = 100, .height = 90};
    for (const auto& [name, format, tolerance] :
         {Exact{"exact.heic", square, roundingOfYCbCr}, Exact{"exact.avif", square, 0},
          Exact{"grid.heic", grid, roundingOfYCbCr}, Exact{"grid.avif", grid, 0},
          Exact{"data-in-header.heic", square, roundingOfYCbCr},
          Exact{"data-in-another-item.heic", square, roundingOfYCbCr},
          Exact{"exif-thumbnail-depth.heic", square, roundingOfYCbCr}})
        EXPECT_TRUE(samePicture(decoded(name).pixels, ramps(format), tolerance)) << name;
}

TEST(HEIFDecoder, theFirstFrameOfASequenceIsThePicture) {
    for (const char* name : {"sequence.avif", "sequence-without-still.avif"}) {
        const Decoded picture = decoded(name);
        EXPECT_TRUE(samePicture(picture.pixels, ramps(picture.frame().format))) << name;
        EXPECT_EQ(opened(name)->contents(), (FileContents{FileContents::Kind::animation, 3})) << name;
    }
}

TEST(HEIFDecoder, otherFilesHoldOnePicture) {
    for (const char* name :
         {"exact.avif", "grid.heic", "exif-thumbnail-depth.heic", "alpha.heic", "overlay.heic"})
        EXPECT_EQ(opened(name)->contents(), FileContents{}) << name;
}

TEST(HEIFDecoder, picturesAreCutAndMirroredAndTheirTurnIsReported) {
    const Decoded picture = decoded("grid-turned-and-cut.heic");
    const RowFormat stored{.width = 80, .height = 60};
    // A turn counter-clockwise, then a reflection: the opposite turn of the reflected picture.
    const PixelBuffer expected = makePicture(stored, [](unsigned x, unsigned y, std::size_t channel) {
        const unsigned u = 10 + (79 - x), v = 15 + y;
        const unsigned samples[] = {3 * u % 256, 5 * v % 256, (2 * u + v) % 256};
        return samples[channel];
    });
    EXPECT_EQ(picture.frame().format, (RowFormat{.width = 60, .height = 80}));
    EXPECT_EQ(picture.frame().quarterTurns, 1);
    EXPECT_TRUE(samePicture(picture.pixels, expected, roundingOfYCbCr));
}

TEST(HEIFDecoder, anIdentityHasTheTransformationsOfBothItems) {
    const Decoded picture = decoded("identity.heic");
    const PixelBuffer expected = makePicture(square, [](unsigned x, unsigned y, std::size_t channel) {
        const unsigned u = 63 - y, v = 63 - x; // turned counter-clockwise, then mirrored
        const unsigned samples[] = {3 * u % 256, 5 * v % 256, (2 * u + v) % 256};
        return samples[channel];
    });
    EXPECT_TRUE(samePicture(picture.pixels, expected, roundingOfYCbCr));
}

TEST(HEIFDecoder, anOverlayDrawsItsPartsOnItsCanvas) {
    const Decoded picture = decoded("overlay.heic");
    const RowFormat canvas{.width = 100, .height = 90};
    const PixelBuffer expected = makePicture(canvas, [](unsigned x, unsigned y, std::size_t channel) {
        const auto ramp = [&](unsigned u, unsigned v) {
            const unsigned samples[] = {3 * u % 256, 5 * v % 256, (2 * u + v) % 256};
            return samples[channel];
        };
        const unsigned orange[] = {255, 128, 0};
        if (x >= 80 && y >= 50)
            return ramp(64 + x - 80, 64 + y - 50);
        return x < 60 && y >= 6 && y < 70 ? ramp(x + 4, y - 6) : orange[channel];
    });
    EXPECT_TRUE(samePicture(picture.pixels, expected, roundingOfYCbCr));
}

TEST(HEIFDecoder, alphaComesFromItsOwnPicture) {
    for (const char* name : {"alpha.heic", "alpha.avif"}) {
        const Decoded picture = decoded(name);
        ASSERT_TRUE(picture.frame().format.hasAlpha) << name;
        const PixelBuffer expected =
            makePicture(picture.frame().format, [](unsigned x, unsigned y, std::size_t channel) {
                const unsigned samples[] = {3 * x % 256, 5 * y % 256, (2 * x + y) % 256, 4 * x % 256};
                return samples[channel];
            });
        EXPECT_TRUE(samePicture(picture.pixels, expected, roundingOfYCbCr)) << name;
    }
}

TEST(HEIFDecoder, premultipliedColoursAreDivided) {
    const PixelBuffer stored = decoded("alpha.heic").pixels,
                      divided = decoded("alpha-premultiplied.heic").pixels;
    const PixelBuffer expected = makePicture(stored.format, [&](unsigned x, unsigned y, std::size_t channel) {
        const unsigned alpha = sampleAt(stored, x, y, 3), sample = sampleAt(stored, x, y, channel);
        if (channel == 3)
            return alpha;
        return alpha == 0 ? 0 : std::min((sample * 255 + alpha / 2) / alpha, 255u);
    });
    EXPECT_TRUE(samePicture(divided, expected));
}

TEST(HEIFDecoder, moreThan8BitsAreDeliveredAs16) {
    for (const char* name : {"10-bits-422.heic", "12-bits-422.avif"}) {
        const Decoded picture = decoded(name);
        EXPECT_EQ(picture.frame().format.depth, SampleDepth::bits16) << name;
        EXPECT_NEAR(sampleAt(picture.pixels, 20, 20, 0), 60 * 257, 8 * 257) << name;
        EXPECT_NEAR(sampleAt(picture.pixels, 20, 20, 1), 100 * 257, 8 * 257) << name;
    }
}

TEST(HEIFDecoder, lossyColoursAreClose) {
    for (const char* name : {"lossy-420.heic", "lossy-420.avif"}) {
        const Decoded picture = decoded(name);
        EXPECT_NEAR(sampleAt(picture.pixels, 20, 20, 0), 60, 10) << name;
        EXPECT_NEAR(sampleAt(picture.pixels, 20, 20, 1), 100, 10) << name;
        EXPECT_NEAR(sampleAt(picture.pixels, 20, 20, 2), 60, 10) << name;
    }
}

TEST(HEIFDecoder, picturesWithoutColoursAreGrey) {
    for (const char* name : {"grey.heic", "grey.avif"})
        EXPECT_EQ(decoded(name).frame().format.model, ColorModel::gray) << name;
}

TEST(HEIFDecoder, profilesComeFromTheFileOrFromItsCodingPoints) {
    EXPECT_EQ(decoded("exact.avif").frame().profile, std::nullopt);
    EXPECT_EQ(decoded("exact.heic").frame().profile, std::nullopt);
    EXPECT_TRUE(decoded("exif-thumbnail-depth.heic").frame().profile);
    EXPECT_TRUE(decoded("display-p3.avif").frame().profile);
    EXPECT_TRUE(decoded("10-bits-pq.avif").frame().profile);
}

TEST(HEIFDecoder, exifBeginsWithTheTIFFHeaderAndIsUpright) {
    const Bytes exif = decoded("exif-thumbnail-depth.heic").exif;
    ASSERT_GT(exif.size(), 32u);
    EXPECT_EQ(exif[0], 'M');
    const Bytes upright{0x01, 0x12, 0, 3, 0, 0, 0, 1, 0, 1}; // Orientation, one short, 1
    EXPECT_FALSE(std::ranges::search(exif, upright).empty());
    EXPECT_TRUE(decoded("exact.heic").exif.empty());
}

TEST(HEIFDecoder, everyCutOffFileFails) {
    for (const char* name : {"exact.heic", "exact.avif", "grid.heic"}) {
        const Bytes file = corpusFile(name);
        for (const std::size_t length : {file.size() - 1, file.size() / 2, std::size_t{100}, std::size_t{64}})
            EXPECT_TRUE(failsToDecode(
                codecOf(file), Bytes(file.begin(), file.begin() + static_cast<std::ptrdiff_t>(length))))
                << name << " " << length;
    }
}

TEST(HEIFDecoder, onlyKnownBrandsAreRecognised) {
    const auto head = [](const char* brands) {
        Bytes bytes{0, 0, 0, 24, 'f', 't', 'y', 'p'};
        bytes.insert(bytes.end(), brands, brands + 4);
        bytes.insert(bytes.end(), {0, 0, 0, 0});
        bytes.insert(bytes.end(), brands + 4, brands + 12);
        return bytes;
    };
    EXPECT_TRUE(heif::heicCodec.recognises(head("heicmif1heic")));
    EXPECT_TRUE(heif::heicCodec.recognises(head("mif1mif1heic")));
    EXPECT_FALSE(heif::avifCodec.recognises(head("heicmif1heic")));
    EXPECT_TRUE(heif::avifCodec.recognises(head("mif1mif1avif")));
    EXPECT_FALSE(heif::heicCodec.recognises(head("mif1mif1avif")));
    EXPECT_TRUE(heif::heicCodec.recognises(head("mif1heicavif")));
    EXPECT_FALSE(heif::avifCodec.recognises(head("mif1heicavif")));
    for (const ImageCodec* codec : {&heif::heicCodec, &heif::avifCodec}) {
        EXPECT_FALSE(codec->recognises(head("isomiso2avc1")));
        EXPECT_FALSE(codec->recognises(head("crx crx isom")));
        EXPECT_FALSE(codec->recognises(Bytes{}));
        EXPECT_FALSE(codec->recognises(Bytes{0, 0, 0, 24, 'f', 't', 'y', 'p'}));
    }
}

TEST(HEIFDecoder, anAVIFFileWithHEVCPicturesIsRefused) {
    Bytes file = corpusFile("exact.heic");
    for (const std::size_t brand : {8, 16, 20})
        std::ranges::copy(std::string_view("avif"), file.begin() + static_cast<std::ptrdiff_t>(brand));
    const Result<Decoded> decoded = decode(heif::avifCodec, file);
    ASSERT_FALSE(decoded);
    EXPECT_EQ(decoded.failure().text, "AVIF files with HEVC pictures are not supported");
}

TEST(HEIFDecoder, missingLibrariesAreNamedWithTheirPackages) {
    const auto hevc = heif::loadHEVCFunctions({"libmissing.so.1"});
    const auto av1 = heif::loadAV1Functions({"libmissing.so.1"});
    ASSERT_FALSE(hevc || av1);
    EXPECT_EQ(hevc.failure().text, "HEIC pictures need libde265 (package libde265-0)");
    EXPECT_EQ(av1.failure().text, "AVIF pictures need dav1d (package libdav1d6)");
    EXPECT_EQ(hevc.failure().reason, Reason::unsupported);
}

} // namespace kestrine::testing
