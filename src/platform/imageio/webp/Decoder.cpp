// Reads WebP files with libwebp: lossy and lossless, with or without alpha, and the first frame of animations
// on its canvas. The file is held in memory.

#include "platform/imageio/Codecs.h"
#include "platform/imageio/WholePicture.h"
#include "platform/imageio/exif/ExifFacts.h"
#include "platform/imageio/exif/ExifSegment.h"
#include "platform/imageio/webp/StreamedRows.h"

#include <algorithm>

namespace kestrine::webp {

namespace {

constexpr std::uint64_t maximumFileBytes = std::uint64_t{1} << 30;
/// What the library holds while it decodes.
constexpr std::uint64_t bytesPerLosslessPixel = 4, bytesPerAlphaSample = 1;

/// The chunks of `file`, whose bytes must outlive this.
class File {
public:
    File(const Functions& library, ByteView file)
        : library_(library), data_{file.data(), file.size()},
          demuxer_(library.openFile(&data_, onlyWhole, nullptr, WEBP_DEMUX_ABI_VERSION), library.closeFile) {
        if (demuxer_)
            hasFrame_ = library.frame(demuxer_.get(), 1, &frame_) != 0;
    }
    ~File() {
        if (hasFrame_)
            library_.releaseFrame(&frame_);
    }
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    /// Whether the file is complete and has a frame. If not, no other function may be called.
    bool isSound() const { return hasFrame_ && frameLiesOnCanvas(); }

    /// The format of the canvas. It has alpha if the first frame has alpha or does not cover the canvas.
    RowFormat format() const {
        return {.width = number(WEBP_FF_CANVAS_WIDTH),
                .height = number(WEBP_FF_CANVAS_HEIGHT),
                .hasAlpha = frame_.has_alpha != 0 || !isCanvasCovered()};
    }

    bool isCanvasCovered() const {
        return static_cast<std::uint32_t>(frame_.width) == number(WEBP_FF_CANVAS_WIDTH)
               && static_cast<std::uint32_t>(frame_.height) == number(WEBP_FF_CANVAS_HEIGHT);
    }

    /// Bytes of memory that are held for whole pictures while the first frame is decoded.
    std::uint64_t heldBytes() const {
        const RowFormat canvas = format();
        return (isCanvasCovered() ? 0 : canvas.bytes())
               + canvas.pixels()
                     * (isLossless()       ? bytesPerLosslessPixel
                        : frame_.has_alpha ? bytesPerAlphaSample
                                           : 0);
    }

    Frame firstFrame() const { return {{frame_.fragment.bytes, frame_.fragment.size}, isLossless()}; }

    /// Decodes the first frame onto `canvas`, which has alpha; does not change the pixels around it.
    Result<void> decodeFirstFrame(PixelBuffer& canvas) const {
        const std::size_t stride = canvas.format.bytesPerRow();
        const std::size_t begin = static_cast<std::size_t>(frame_.y_offset) * stride
                                  + static_cast<std::size_t>(frame_.x_offset) * canvas.format.bytesPerPixel();
        if (!library_.decodeRGBA(frame_.fragment.bytes, frame_.fragment.size, canvas.bytes.data() + begin,
                                 canvas.bytes.size() - begin, static_cast<int>(stride)))
            return Failure{Reason::malformed, "the WebP picture cannot be decoded"};
        return {};
    }

    std::uint32_t frameCount() const { return number(WEBP_FF_FRAME_COUNT); }

    /// The content of the first chunk called `name`; empty when there is none.
    Bytes chunk(const char (&name)[5]) const {
        WebPChunkIterator found{};
        if (!library_.chunk(demuxer_.get(), name, 1, &found))
            return {};
        Bytes content(found.chunk.bytes, found.chunk.bytes + found.chunk.size);
        library_.releaseChunk(&found);
        return content;
    }

private:
    static constexpr int onlyWhole = 0;

    std::uint32_t number(WebPFormatFeature feature) const { return library_.number(demuxer_.get(), feature); }

    bool frameLiesOnCanvas() const {
        return frame_.x_offset >= 0 && frame_.y_offset >= 0 && frame_.width > 0 && frame_.height > 0
               && std::int64_t{frame_.x_offset} + frame_.width <= number(WEBP_FF_CANVAS_WIDTH)
               && std::int64_t{frame_.y_offset} + frame_.height <= number(WEBP_FF_CANVAS_HEIGHT);
    }

    bool isLossless() const {
        constexpr int lossless = 2;
        WebPBitstreamFeatures features{};
        return library_.features(frame_.fragment.bytes, frame_.fragment.size, &features,
                                 WEBP_DECODER_ABI_VERSION)
                   == VP8_STATUS_OK
               && features.format == lossless;
    }

    const Functions& library_;
    const WebPData data_;
    const std::unique_ptr<WebPDemuxer, decltype(&WebPDemuxDelete)> demuxer_;
    WebPIterator frame_{};
    bool hasFrame_ = false;
};

std::optional<ColorProfile> storedProfile(const File& file, const ExifFacts& exif) {
    const Bytes icc = file.chunk("ICCP");
    if (std::optional<ColorProfile> profile = ColorProfile::fromICC(icc, ColorModel::rgb))
        return profile;
    return exif.isAdobeRGB ? std::optional(ColorProfile::adobeRGB()) : std::nullopt;
}

class Decoder final : public ImageDecoder {
public:
    Decoder(const Functions& library, std::shared_ptr<const Bytes> bytes, const File& file)
        : library_(library), bytes_(std::move(bytes)), exif_(withoutExifSegmentMark(file.chunk("EXIF"))),
          frameCount_(file.frameCount()) {
        const ExifFacts facts = readExifFacts(exif_);
        const RowFormat format = file.format();
        frames_.push_back({.format = format,
                           .resolution = facts.resolution.value_or(Resolution{}),
                           .profile = storedProfile(file, facts),
                           .orientation = facts.orientation,
                           .heldBytes = file.heldBytes()});
    }

    Result<RowSourcePointer> rows(std::size_t, int) const override {
        const RowFormat format = frames_.front().format;
        const File file(library_, *bytes_);
        if (file.isCanvasCovered())
            return streamedRows(library_, bytes_, file.firstFrame(), format);
        return rowsOfWholePicture(format,
                                  [library = &library_, bytes = bytes_, format]() -> Result<PixelBuffer> {
                                      PixelBuffer canvas(format);
                                      TRY(File(*library, *bytes).decodeFirstFrame(canvas));
                                      return canvas;
                                  });
    }

    Result<Bytes> exif() const override { return exif_; }

    FileContents contents() const override {
        return FileContents::several(FileContents::Kind::animation, frameCount_);
    }

private:
    const Functions& library_;
    const std::shared_ptr<const Bytes> bytes_;
    const Bytes exif_;
    const std::uint32_t frameCount_;
};

bool recognises(ByteView head) {
    constexpr std::string_view riff = "RIFF", webp = "WEBP";
    return head.size() >= 12 && std::equal(riff.begin(), riff.end(), head.begin())
           && std::equal(webp.begin(), webp.end(), head.begin() + 8);
}

Result<std::unique_ptr<ImageDecoder>> open(std::shared_ptr<const ByteReader> reader) {
    const Result<Functions>& library = installedFunctions();
    if (!library)
        return library.failure();
    Bytes bytes = TRY(reader->readAll(maximumFileBytes));
    const auto shared = std::make_shared<const Bytes>(std::move(bytes));
    const File file(*library, *shared);
    if (!file.isSound())
        return Failure{Reason::malformed, "the WebP file is damaged or incomplete"};
    if (!file.format().isWithinLimits())
        return Failure{Reason::tooLarge, "the WebP picture has too many pixels"};
    return std::unique_ptr<ImageDecoder>(std::make_unique<Decoder>(*library, shared, file));
}

} // namespace

const ImageCodec codec{"WebP", recognises, open, [] { (void)installedFunctions(); }};

} // namespace kestrine::webp
