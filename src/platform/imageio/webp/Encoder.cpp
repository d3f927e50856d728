// Writes WebP files with libwebp, which wants the whole picture. Grey pictures must have been made RGB
// before.

#include "platform/coregraphics/PixelBuffer.h"
#include "platform/coregraphics/RowsAhead.h"
#include "platform/imageio/Codecs.h"
#include "platform/imageio/webp/Container.h"
#include "platform/imageio/webp/Library.h"

#include <algorithm>

namespace kestrine::webp {

namespace {

// The library's methods (0 to 6) and lossless levels (0 to 9), by effort. Its own defaults are 4 and 6.
constexpr int methods[] = {2, 4, 6}, losslessLevels[] = {3, 6, 8};

/// A picture and the file that is made of it, freed together.
class Encoding {
public:
    explicit Encoding(const Functions& library) : library_(library) { library.initializeWriter(&writer_); }
    ~Encoding() {
        library_.freePicture(&picture_);
        library_.freeWriter(&writer_);
    }
    Encoding(const Encoding&) = delete;
    Encoding& operator=(const Encoding&) = delete;

    bool take(const PixelBuffer& pixels, bool isLossless) {
        if (!library_.initializePicture(&picture_, WEBP_ENCODER_ABI_VERSION))
            return false;
        picture_.width = static_cast<int>(pixels.format.width);
        picture_.height = static_cast<int>(pixels.format.height);
        picture_.use_argb = isLossless ? 1 : 0;
        picture_.writer = library_.write;
        picture_.custom_ptr = &writer_;
        const auto import = pixels.format.hasAlpha ? library_.importRGBA : library_.importRGB;
        return import(&picture_, pixels.bytes.data(), static_cast<int>(pixels.format.bytesPerRow())) != 0;
    }

    bool encode(const WebPConfig& configuration) { return library_.encode(&configuration, &picture_) != 0; }
    bool lacksMemory() const { return picture_.error_code == VP8_ENC_ERROR_OUT_OF_MEMORY; }
    ByteView file() const { return {writer_.mem, writer_.size}; }

private:
    const Functions& library_;
    WebPPicture picture_{};
    WebPMemoryWriter writer_{};
};

Result<WebPConfig> configurationFor(const Functions& library, const EncodingOptions& options,
                                    const RowFormat& format) {
    WebPConfig configuration{};
    const auto quality = static_cast<float>(options.percent());
    bool isSound =
        library.configure(&configuration, WEBP_PRESET_DEFAULT, quality, WEBP_ENCODER_ABI_VERSION) != 0;
    const auto effort = static_cast<std::size_t>(options.effort);
    configuration.method = methods[effort];
    if (options.isLossless)
        isSound = isSound && library.configureLossless(&configuration, losslessLevels[effort]) != 0;
    configuration.exact = options.isLossless ? 1 : 0;               // keeps the colours of transparent pixels
    configuration.thread_level = usefulThreads(format) > 1 ? 1 : 0; // does not change the bytes
    if (!isSound)
        return Failure{Reason::unsupported, "the WebP encoder cannot be set up"};
    return configuration;
}

} // namespace

Result<void> encode(RowSource& rows, const EncodingOptions& options, ByteSink& file) {
    const Result<Functions>& library = installedFunctions();
    if (!library)
        return library.failure();
    const RowFormat format = rows.format();
    const WebPConfig configuration = TRY(configurationFor(*library, options, format));
    Encoding encoding(*library);
    {
        const PixelBuffer pixels = TRY(readAllRows(rows));
        if (!encoding.take(pixels, options.isLossless))
            return Failure{Reason::outOfMemory, "not enough memory for the WebP picture"};
    }
    if (!encoding.encode(configuration))
        return encoding.lacksMemory() ? Failure{Reason::outOfMemory, "not enough memory for the WebP picture"}
                                      : Failure{Reason::unsupported, "the WebP encoder failed"};
    const bool keepsProfile = options.profile != nullptr && options.profile->model() == format.model;
    const ByteView profile = keepsProfile ? options.profile->bytes() : ByteView();
    return file.write(withMetadata(encoding.file(), format, profile, options.exif));
}

} // namespace kestrine::webp
