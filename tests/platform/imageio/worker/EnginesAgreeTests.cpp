// Everything that an engine gives is the same from both of them.
#include "platform/host/process/WorkerNursery.h"
#include "platform/imageio/Codecs.h"
#include "platform/imageio/LocalSource.h"
#include "platform/imageio/worker/WorkerEngine.h"
#include "tests/platform/imageio/Decoded.h"
#include "tests/support/Pictures.h"
#include "tests/support/SourceFolder.h"
#include "tests/support/TemporaryFolder.h"

#include <filesystem>
#include <optional>
#include <ostream>
#include <unistd.h>

namespace kestrine {
namespace {

using SourcePointer = std::shared_ptr<Source>;

std::string textOf(const Failure& failure) {
    return std::to_string(static_cast<int>(failure.reason)) + " " + failure.text;
}

/// The bytes, or the failure.
std::string contentOf(const Result<Bytes>& result) {
    return result ? "bytes " + std::string(result->begin(), result->end()) : textOf(result.failure());
}

std::string contentOf(const Result<PixelBuffer>& pixels) {
    return pixels ? contentOf(Result<Bytes>(pixels->bytes)) : textOf(pixels.failure());
}

/// The content of a result that is written into a file, or the failure.
std::string contentWritten(const Picture& picture, const Output& output) {
    const MemoryFile file = *MemoryFile::create();
    const Result<void> written = renderInto(file.number(), picture, output);
    if (!written)
        return textOf(written.failure());
    return contentOf(file.read(0, static_cast<std::uint64_t>(::lseek(file.number(), 0, SEEK_END))));
}

std::string damageOf(const Source& source) {
    const std::optional<Failure> damage = source.damage();
    return damage ? textOf(*damage) : "none";
}

/// A quarter turn and a reduction to at most 40 x 30.
std::vector<PictureStep> turnedAndReduced(const FrameDescription& frame) {
    const AxisMap x = AxisMap::filling(frame.format.height, std::min(40U, frame.format.height));
    const AxisMap y = AxisMap::filling(frame.format.width, std::min(30U, frame.format.width));
    return {QuarterTurn::clockwise, Resampling{x, y, ResampleFilter::lanczos, Light::linear}};
}

/// Outputs of all kinds: with what the file has, and with what a program gives.
std::vector<Output> outputsFor(const SourcePointer& source) {
    static const ColorProfile profile = ColorProfile::adobeRGB();
    static const Bytes colors = {0, 0, 0, 255, 255, 255, 200, 30, 40};
    std::vector<Output> outputs;
    for (const OutputFormat& format : outputFormats()) {
        outputs.push_back({format.type, {.quality = 0.6}, {true, source}});
        outputs.push_back({format.type,
                           {.quality = 0.9,
                            .ditherTransparency = true,
                            .resolution = {300, 200},
                            .profile = &profile,
                            .colorTable = colors}});
    }
    return outputs;
}

void expectTheSameOfFrame(const SourcePointer& here, const SourcePointer& elsewhere, std::size_t frame) {
    const FrameDescription& described = here->frames()[frame];
    EXPECT_EQ(elsewhere->frames()[frame].format, described.format);
    EXPECT_EQ(elsewhere->frames()[frame].resolution, described.resolution);
    EXPECT_EQ(elsewhere->frames()[frame].orientation, described.orientation);
    EXPECT_EQ(elsewhere->codec(), here->codec());
    for (const std::vector<PictureStep>& steps :
         {std::vector<PictureStep>{},
          turnedAndReduced(described),
          {Fade{0.5F}, IntoGenericRGBA{}},
          {Mirror{}, IntoSRGB{}, Flatten{{200, 30, 0}}, Pad{1, 2, 3, 4, {9, 99, 0}}}}) {
        const Picture one{here, frame, steps}, other{elsewhere, frame, steps};
        for (const auto property :
             {PictureProperty::profile, PictureProperty::exif, PictureProperty::colorTable,
              PictureProperty::contents, PictureProperty::profileName})
            EXPECT_EQ(contentOf(elsewhere->property(other, property)),
                      contentOf(here->property(one, property)));
        EXPECT_TRUE(contentOf(readPixels(other)) == contentOf(readPixels(one)));
        const std::vector<Output> outputs = outputsFor(here), remote = outputsFor(elsewhere);
        for (std::size_t i = 0; i < outputs.size(); ++i) {
            const std::string expected = contentOf(render(one, outputs[i]));
            EXPECT_TRUE(contentOf(render(other, remote[i])) == expected) << i;
            if (!steps.empty())
                continue;
            EXPECT_TRUE(contentWritten(other, remote[i]) == expected) << i;
            EXPECT_TRUE(contentWritten(one, outputs[i]) == expected) << i;
        }
    }
}

void expectTheSameOf(const Bytes& file) {
    WorkerEngine engine({}, Isolation::automatic, 1);
    const Result<SourcePointer> elsewhere = engine.open(readerOfBytes(file), nullptr);
    const Result<std::shared_ptr<LocalSource>> here = LocalSource::open(readerOfBytes(file));
    ASSERT_EQ(elsewhere.ok(), here.ok());
    if (!here) {
        EXPECT_EQ(textOf(elsewhere.failure()), textOf(here.failure()));
        return;
    }
    const Result<FileContents> contents = contentsOf(*here);
    ASSERT_TRUE(contents);
    EXPECT_EQ(contentOf((*here)->property({*here, 0, {}}, PictureProperty::contents)),
              contentOf(Result<Bytes>(bytesOf(*contents))));
    ASSERT_EQ((*elsewhere)->frames().size(), (*here)->frames().size());
    for (std::size_t frame = 0; frame < (*here)->frames().size(); ++frame)
        expectTheSameOfFrame(*here, *elsewhere, frame);
    EXPECT_EQ(damageOf(**elsewhere), damageOf(**here));
}

using EnginesAgree = ::testing::TestWithParam<std::string>;

TEST_P(EnginesAgree, aboutEveryFileOfACorpusAlsoWhenItIsCutOff) {
    // A copy of this process would lack the threads that the libraries of these formats start here.
    std::optional<WorkerNursery> nursery;
    if (GetParam() == "raw" || GetParam() == "svg")
        nursery.emplace(KESTRINE_WORKER_PROGRAM);
    std::size_t files = 0;
    for (const auto& entry :
         std::filesystem::directory_iterator(inSourceFolder("fuzz/corpus/" + GetParam()))) {
        SCOPED_TRACE(entry.path().string());
        Bytes file = testing::readFileBytes(entry.path());
        expectTheSameOf(file);
        file.resize(file.size() * 2 / 3);
        expectTheSameOf(file);
        ++files;
    }
    EXPECT_GT(files, 3u);
}

INSTANTIATE_TEST_SUITE_P(Formats, EnginesAgree,
                         ::testing::Values("jpeg", "ownjpeg", "png", "gif", "tiff", "webp", "heif", "bmp",
                                           "pnm", "jxl", "jp2", "psd", "tga", "ico", "icns", "pcx", "qoi",
                                           "sgi", "raw", "svg"));

TEST(EnginesAgree, aboutEveryLayoutOfPixels) {
    for (const RowFormat& layout : testing::allLayouts(70, 50)) {
        expectTheSameOf(testing::encodeSound(tiff::encode, testing::makePhoto(layout)));
        expectTheSameOf(testing::encodeSound(png::encode, testing::makePhoto(layout)));
    }
}

TEST(EnginesAgree, aboutAPhotographThatSeveralThreadsDecode) {
    const RowFormat format{3000, 1000, ColorModel::rgb, false, SampleDepth::bits8};
    expectTheSameOf(testing::encodeSound(jpeg::encode, testing::makePhoto(format), {.quality = 0.8}));
}

TEST(EnginesAgree, aboutAnEmptyCanvasWithTheExifBlockOfAFile) {
    const Bytes file = testing::readFileBytes(inSourceFolder("fuzz/corpus/png/exif-after-pixels.png"));
    WorkerEngine engine({}, Isolation::automatic, 1);
    const SourcePointer elsewhere = *engine.open(readerOfBytes(file), nullptr);
    const SourcePointer here = *LocalSource::open(readerOfBytes(file));
    const Picture canvas{Source::clear(30, 20), 0, {Flatten{}}};
    const EncodingOptions options{.quality = 0.5};
    const Bytes expected = *render(canvas, {FileType::jpeg, options, {false, here}});
    EXPECT_EQ(*render(canvas, {FileType::jpeg, options, {false, elsewhere}}), expected);
    EXPECT_NE(*render(canvas, {FileType::jpeg, options}), expected);
}

} // namespace
} // namespace kestrine
