// Writes AVIF files with libavif and its encoder libaom, which want the whole picture. The orientation that
// the EXIF data give to a picture that is not upright becomes a turn of the container, because only that one
// counts.

#include "platform/coregraphics/PixelBuffer.h"
#include "platform/coregraphics/RowsAhead.h"
#include "platform/imageio/Codecs.h"
#include "platform/imageio/avif/Library.h"
#include "platform/imageio/exif/ExifFacts.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <type_traits>

namespace kestrine::avif {

namespace {

/// The speed of the encoder, from 0 (slowest) to 10. Per pixel, 6 takes a fifth of the time of 4, and three
/// times that of 8.
constexpr int speeds[] = {8, 6, 4}; // by effort

/// Every viewer decodes 8 and 10 bits. 12 bits lose less of 16 bits, and are used where loss matters more.
std::uint32_t bitsFor(const RowFormat& format, bool isLossless) {
    if (format.depth == SampleDepth::bits8)
        return 8;
    return isLossless ? 12 : 10;
}

/// The quantizer, 0 to 63, that the library's own tool uses for a quality of 0 to 100.
int quantizerFor(double percent) {
    return static_cast<int>(((100 - percent) * AVIF_QUANTIZER_WORST_QUALITY + 50) / 100);
}

/// Colours have half the resolution, which is hard to see, unless the quality is high.
avifPixelFormat planesFor(const RowFormat& format, const EncodingOptions& options) {
    constexpr double highQuality = 0.9;
    if (format.model == ColorModel::gray)
        return AVIF_PIXEL_FORMAT_YUV400;
    return options.isLossless || options.quality >= highQuality ? AVIF_PIXEL_FORMAT_YUV444
                                                                : AVIF_PIXEL_FORMAT_YUV420;
}

/// Whether a function of libavif succeeds; before version 1.0 many of them return nothing.
template <class Function, class... Values>
bool succeeds(Function* function, Values... values) {
    if constexpr (std::is_void_v<std::invoke_result_t<Function*, Values...>>) {
        function(values...);
        return true;
    } else {
        return function(values...) == AVIF_RESULT_OK;
    }
}

/// Exchanges top and bottom (0) or left and right (1). Before libavif 1.0 the member has another name.
template <class Mirror>
void setMirror(Mirror& mirror, std::uint8_t value) {
    if constexpr (requires { mirror.axis; })
        mirror.axis = value;
    else
        mirror.mode = value;
}

class Encoding {
public:
    Encoding(const Functions& library, const RowFormat& format, const EncodingOptions& options)
        : library_(library), options_(options), format_(format),
          image_(library.createImage(format.width, format.height, bitsFor(format, options.isLossless),
                                     planesFor(format, options)),
                 library.destroyImage),
          encoder_(library.createEncoder(), library.destroyEncoder) {}
    ~Encoding() { library_.freeData(&file_); }
    Encoding(const Encoding&) = delete;
    Encoding& operator=(const Encoding&) = delete;

    Result<void> take(const PixelBuffer& pixels) {
        const bool isGray = format_.model == ColorModel::gray;
        if (!setColors() || !(isGray ? takeGray(pixels) : takeRGB(pixels)))
            return Failure{Reason::outOfMemory, "not enough memory for the AVIF picture"};
        return {};
    }

    Result<Bytes> encode() {
        if (!setUp())
            return Failure{Reason::outOfMemory, "not enough memory for the AVIF picture"};
        const avifResult result = library_.encode(encoder_.get(), image_.get(), &file_);
        if (result == AVIF_RESULT_OUT_OF_MEMORY)
            return Failure{Reason::outOfMemory, "not enough memory for the AVIF picture"};
        if (result != AVIF_RESULT_OK)
            return Failure{Reason::unsupported, "the AVIF encoder failed"};
        return Bytes(file_.data, file_.data + file_.size);
    }

private:
    /// False without memory, as the functions below.
    bool setColors() {
        const bool isRGB = options_.isLossless && format_.model == ColorModel::rgb;
        image_->yuvRange = AVIF_RANGE_FULL;
        image_->matrixCoefficients =
            isRGB ? AVIF_MATRIX_COEFFICIENTS_IDENTITY : AVIF_MATRIX_COEFFICIENTS_BT601;
        if (options_.profile != nullptr) {
            const ByteView icc = options_.profile->bytes();
            if (!succeeds(library_.setProfile, image_.get(), icc.data(), icc.size()))
                return false;
        } else {
            image_->colorPrimaries = AVIF_COLOR_PRIMARIES_BT709;
            image_->transferCharacteristics = AVIF_TRANSFER_CHARACTERISTICS_SRGB;
        }
        if (!options_.exif.empty()) {
            const Bytes block = uprightExif(copied(options_.exif));
            if (!succeeds(library_.setExif, image_.get(), block.data(), block.size()))
                return false;
            turnLike(readExifFacts(options_.exif).orientation);
        }
        return true;
    }

    /// Turns counter-clockwise in steps of 90 degrees, then mirrors: top and bottom in mode 0, left and right
    /// in mode 1.
    void turnLike(int orientation) {
        struct Turn {
            std::uint8_t angle;
            int mode; ///< -1: not mirrored
        };
        constexpr Turn turns[] = {{0, -1}, {0, 1}, {2, -1}, {0, 0}, {1, 0}, {3, -1}, {1, 1}, {1, -1}};
        const Turn& turn = turns[orientation - 1];
        image_->transformFlags = AVIF_TRANSFORM_NONE;
        if (turn.angle != 0)
            image_->transformFlags |= AVIF_TRANSFORM_IROT;
        if (turn.mode >= 0)
            image_->transformFlags |= AVIF_TRANSFORM_IMIR;
        image_->irot.angle = turn.angle;
        setMirror(image_->imir, static_cast<std::uint8_t>(std::max(turn.mode, 0)));
    }

    bool takeRGB(const PixelBuffer& pixels) {
        avifRGBImage rgb;
        library_.setRGBDefaults(&rgb, image_.get());
        rgb.depth = static_cast<std::uint32_t>(8 * format_.bytesPerSample());
        rgb.format = format_.hasAlpha ? AVIF_RGB_FORMAT_RGBA : AVIF_RGB_FORMAT_RGB;
        rgb.pixels = const_cast<std::uint8_t*>(pixels.bytes.data()); // only read
        rgb.rowBytes = static_cast<std::uint32_t>(format_.bytesPerRow());
        return library_.convertRGB(image_.get(), &rgb) == AVIF_RESULT_OK;
    }

    bool takeGray(const PixelBuffer& pixels) {
        const avifPlanesFlags planes = AVIF_PLANES_YUV | (format_.hasAlpha ? AVIF_PLANES_A : 0);
        if (library_.allocatePlanes(image_.get(), planes) != AVIF_RESULT_OK)
            return false;
        const std::size_t channels = format_.channels();
        const auto copyPlane = [&](std::size_t channel, std::uint8_t* plane, std::size_t rowBytes) {
            for (std::size_t y = 0; y < format_.height; ++y) {
                const std::uint8_t* const row = pixels.bytes.data() + y * format_.bytesPerRow();
                if (image_->depth == 8)
                    copySamples(row, channel, channels, plane + y * rowBytes);
                else
                    copySamples(reinterpret_cast<const std::uint16_t*>(row), channel, channels,
                                reinterpret_cast<std::uint16_t*>(plane + y * rowBytes));
            }
        };
        copyPlane(0, image_->yuvPlanes[AVIF_CHAN_Y], image_->yuvRowBytes[AVIF_CHAN_Y]);
        if (format_.hasAlpha)
            copyPlane(1, image_->alphaPlane, image_->alphaRowBytes);
        return true;
    }

    template <class Sample>
    void copySamples(const Sample* row, std::size_t channel, std::size_t channels, Sample* plane) const {
        constexpr std::uint32_t full = static_cast<Sample>(~Sample{0});
        const std::uint32_t maximum = (1u << image_->depth) - 1;
        for (std::size_t x = 0; x < format_.width; ++x)
            plane[x] =
                static_cast<Sample>((std::uint64_t{row[x * channels + channel]} * maximum + full / 2) / full);
    }

    bool setUp() {
        encoder_->codecChoice = AVIF_CODEC_CHOICE_AOM;
        // With one thread the encoder makes other bytes; with more, their number makes no difference.
        encoder_->maxThreads = static_cast<int>(std::max<std::size_t>(usefulThreads(format_), 2));
        encoder_->speed = speeds[static_cast<std::size_t>(options_.effort)];
        encoder_->minQuantizer = AVIF_QUANTIZER_LOSSLESS;
        encoder_->maxQuantizer = options_.isLossless ? AVIF_QUANTIZER_LOSSLESS : AVIF_QUANTIZER_WORST_QUALITY;
        encoder_->minQuantizerAlpha = encoder_->maxQuantizerAlpha = AVIF_QUANTIZER_LOSSLESS;
        if (options_.isLossless)
            return true;
        const std::string quantizer = std::to_string(quantizerFor(options_.percent()));
        return succeeds(library_.setOption, encoder_.get(), "color:end-usage", "q")
               && succeeds(library_.setOption, encoder_.get(), "color:cq-level", quantizer.c_str());
    }

    const Functions& library_;
    const EncodingOptions& options_;
    const RowFormat format_;
    const std::unique_ptr<avifImage, decltype(&avifImageDestroy)> image_;
    const std::unique_ptr<avifEncoder, decltype(&avifEncoderDestroy)> encoder_;
    avifRWData file_ = AVIF_DATA_EMPTY;
};

} // namespace

void openLibraries() { (void)installedFunctions(); }

Result<void> encode(RowSource& rows, const EncodingOptions& options, ByteSink& file) {
    const Result<Functions>& library = installedFunctions();
    if (!library)
        return library.failure();
    const RowFormat format = rows.format();
    Encoding encoding(*library, format, options);
    {
        const PixelBuffer pixels = TRY(readAllRows(rows));
        TRY(encoding.take(pixels));
    }
    const Bytes bytes = TRY(encoding.encode());
    return file.write(bytes);
}

} // namespace kestrine::avif
