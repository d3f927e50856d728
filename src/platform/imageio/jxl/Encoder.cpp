// Writes JPEG XL files with libjxl, which wants the whole picture. The orientation that the EXIF data give to
// a picture that is not upright goes into the codestream, because only that one counts.

#include "platform/coregraphics/PixelBuffer.h"
#include "platform/coregraphics/RowsAhead.h"
#include "platform/imageio/Codecs.h"
#include "platform/imageio/exif/ExifFacts.h"
#include "platform/imageio/jxl/Library.h"

#include <algorithm>
#include <cmath>

namespace kestrine::jxl {

namespace {

constexpr std::size_t firstOutputBytes = 1 << 16;
/// The library's efforts, from 1 to 9, by EncodingOptions::effort. The library's default, 7, takes twice
/// (lossy) and three times (lossless) as long as the middle ones; its lossless files are 8 % smaller, its
/// lossy ones are not.
constexpr int lossyEfforts[] = {3, 5, 7}, losslessEfforts[] = {3, 4, 7};

/// The distance that the library's own tool uses for a quality of 0 to 100: 0.1 is visually lossless, 1
/// nearly so.
float distanceFor(double percent) {
    constexpr double best = 0.1, linearFrom = 30;
    const double distance = percent >= linearFrom ? best + (100 - percent) * 0.09
                                                  : 6.4 + std::pow(2.5, (linearFrom - percent) / 5) / 6.25;
    return static_cast<float>(std::clamp(distance, best, 15.0));
}

JxlBasicInfo describe(const Functions& library, const RowFormat& format, const EncodingOptions& options) {
    const std::uint32_t bits = format.depth == SampleDepth::bits8 ? 8 : 16;
    JxlBasicInfo info;
    library.encoderInitializeInfo(&info);
    info.xsize = format.width;
    info.ysize = format.height;
    info.bits_per_sample = bits;
    info.num_color_channels = static_cast<std::uint32_t>(format.colorChannels());
    info.num_extra_channels = format.hasAlpha ? 1 : 0;
    info.alpha_bits = format.hasAlpha ? bits : 0;
    info.uses_original_profile = options.isLossless ? JXL_TRUE : JXL_FALSE;
    info.orientation = static_cast<JxlOrientation>(readExifFacts(options.exif).orientation);
    return info;
}

class Encoding {
public:
    Encoding(const Functions& library, std::size_t threads)
        : library_(library),
          runner_(threads > 1 ? library.createRunner(nullptr, threads) : nullptr, library.destroyRunner),
          encoder_(library.encoderCreate(nullptr), library.encoderDestroy) {
        if (runner_ != nullptr)
            library.encoderSetRunner(encoder_.get(), library.run, runner_.get());
    }

    Result<Bytes> encode(const PixelBuffer& pixels, const EncodingOptions& options) {
        if (!encoder_ || !setUp(pixels.format, options) || !addPicture(pixels, options)
            || !(options.exif.empty() || addExif(options.exif)))
            return Failure{Reason::unsupported, "the JPEG XL encoder cannot be set up"};
        library_.encoderCloseInput(encoder_.get());
        return output();
    }

private:
    bool setUp(const RowFormat& format, const EncodingOptions& options) {
        const JxlBasicInfo info = describe(library_, format, options);
        if (!options.exif.empty() && library_.encoderUseBoxes(encoder_.get()) != JXL_ENC_SUCCESS)
            return false;
        constexpr int levelForMoreThan8Bits = 10;
        if (format.depth == SampleDepth::bits16
            && library_.encoderSetLevel(encoder_.get(), levelForMoreThan8Bits) != JXL_ENC_SUCCESS)
            return false;
        return library_.encoderSetInfo(encoder_.get(), &info) == JXL_ENC_SUCCESS
               && setColors(format, options.profile);
    }

    bool setColors(const RowFormat& format, const ColorProfile* profile) {
        if (profile != nullptr)
            return library_.encoderSetProfile(encoder_.get(), profile->bytes().data(),
                                              profile->bytes().size())
                   == JXL_ENC_SUCCESS;
        JxlColorEncoding color;
        library_.makeSRGB(&color, format.model == ColorModel::gray ? JXL_TRUE : JXL_FALSE);
        return library_.encoderSetColors(encoder_.get(), &color) == JXL_ENC_SUCCESS;
    }

    bool addPicture(const PixelBuffer& pixels, const EncodingOptions& options) {
        JxlEncoderFrameSettings* settings = library_.encoderCreateSettings(encoder_.get(), nullptr);
        const float distance = distanceFor(options.percent());
        const JxlEncoderStatus precision = options.isLossless
                                               ? library_.encoderSetLossless(settings, JXL_TRUE)
                                               : library_.encoderSetDistance(settings, distance);
        const int effort =
            (options.isLossless ? losslessEfforts : lossyEfforts)[static_cast<std::size_t>(options.effort)];
        if (precision != JXL_ENC_SUCCESS
            || library_.encoderSetOption(settings, JXL_ENC_FRAME_SETTING_EFFORT, effort) != JXL_ENC_SUCCESS)
            return false;
        const RowFormat& format = pixels.format;
        // At low qualities, libjxl 0.7 stores the picture reduced to 1/8 in a frame of its own. It then
        // aborts the process if a side is too long: seen with 530,000 pixels and more, not with 8 * 65,536.
        constexpr std::uint32_t longestWithReducedFrame = 8 * 65536;
        if (std::max(format.width, format.height) > longestWithReducedFrame
            && library_.encoderSetOption(settings, JXL_ENC_FRAME_SETTING_PROGRESSIVE_DC, 0)
                   != JXL_ENC_SUCCESS)
            return false;
        const JxlPixelFormat layout{static_cast<std::uint32_t>(format.channels()),
                                    format.depth == SampleDepth::bits8 ? JXL_TYPE_UINT8 : JXL_TYPE_UINT16,
                                    JXL_NATIVE_ENDIAN, 0};
        return library_.encoderAddFrame(settings, &layout, pixels.bytes.data(), pixels.bytes.size())
               == JXL_ENC_SUCCESS;
    }

    /// A box begins with the offset of the block in it.
    bool addExif(ByteView exif) {
        Bytes box(4);
        const Bytes block = uprightExif(copied(exif));
        box.insert(box.end(), block.begin(), block.end());
        return library_.encoderAddBox(encoder_.get(), "Exif", box.data(), box.size(), JXL_FALSE)
               == JXL_ENC_SUCCESS;
    }

    Result<Bytes> output() {
        Bytes file(firstOutputBytes);
        std::size_t filled = 0;
        for (;;) {
            std::uint8_t* next = file.data() + filled;
            std::size_t left = file.size() - filled;
            const JxlEncoderStatus status = library_.encoderProcess(encoder_.get(), &next, &left);
            filled = file.size() - left;
            if (status == JXL_ENC_SUCCESS)
                break;
            if (status != JXL_ENC_NEED_MORE_OUTPUT)
                return Failure{Reason::unsupported, "the JPEG XL encoder failed"};
            file.resize(2 * file.size());
        }
        file.resize(filled);
        return file;
    }

    const Functions& library_;
    const std::unique_ptr<void, decltype(&JxlThreadParallelRunnerDestroy)> runner_; ///< outlives the encoder
    const std::unique_ptr<JxlEncoder, decltype(&JxlEncoderDestroy)> encoder_;
};

} // namespace

Result<void> encode(RowSource& rows, const EncodingOptions& options, ByteSink& file) {
    const Result<Functions>& library = installedFunctions();
    if (!library)
        return library.failure();
    const PixelBuffer pixels = TRY(readAllRows(rows));
    const Bytes bytes = TRY(Encoding(*library, usefulThreads(pixels.format)).encode(pixels, options));
    return file.write(bytes);
}

} // namespace kestrine::jxl
