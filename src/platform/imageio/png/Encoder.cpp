// Writes PNG: 8 or 16 bits, grey or RGB, with or without alpha, never interlaced. libpng writes everything
// before the pixels; our own code filters and compresses the pixels (fast/RowFilter.h,
// fast/ImageDataWriter.h).

#include "platform/coregraphics/RowsAhead.h"
#include "platform/imageio/Codecs.h"
#include "platform/imageio/png/Library.h"
#include "platform/imageio/png/fast/Chunk.h"
#include "platform/imageio/png/fast/ImageDataWriter.h"
#include "platform/imageio/png/fast/RowFilter.h"

#include <cmath>
#include <new>

namespace kestrine::png {

namespace {

/// The finished bytes. No exception may pass through libpng, so a lack of memory is remembered instead.
struct Output {
    Bytes bytes;
    bool outOfMemory = false;

    bool append(ByteView more) noexcept {
        try {
            bytes.insert(bytes.end(), more.begin(), more.end());
        } catch (const std::bad_alloc&) {
            outOfMemory = true;
        }
        return !outOfMemory;
    }
};

png_uint_32 perMeter(double perInch) {
    constexpr double metersPerInch = 0.0254;
    return static_cast<png_uint_32>(std::lround(perInch / metersPerInch));
}

int colorType(const RowFormat& format) {
    return (format.model == ColorModel::rgb ? PNG_COLOR_MASK_COLOR : 0)
           | (format.hasAlpha ? PNG_COLOR_MASK_ALPHA : 0);
}

/// The profile, padded to a multiple of four bytes; the length in its header is updated. libpng requires this
/// of profiles of version 4.
Bytes paddedProfile(const ColorProfile* profile) {
    if (profile == nullptr)
        return {};
    Bytes icc(profile->bytes().begin(), profile->bytes().end());
    if (icc.size() % 4 == 0)
        return icc;
    icc.resize((icc.size() + 3) / 4 * 4);
    for (std::size_t i = 0; i < 4; ++i)
        icc[i] = static_cast<std::uint8_t>(icc.size() >> (24 - 8 * i));
    return icc;
}

/// Makes the chunks before the pixels.
class Header {
public:
    Header(const RowFormat& format, const EncodingOptions& options)
        : format_(format), profile_(paddedProfile(options.profile)),
          resolution_(plausibleResolution(options.resolution.horizontal, options.resolution.vertical)) {
        png_ = png_create_write_struct(PNG_LIBPNG_VER_STRING, &message_, jumpOnError, keepWarning);
        info_ = png_ ? png_create_info_struct(png_) : nullptr;
    }
    ~Header() { png_destroy_write_struct(&png_, &info_); }
    Header(const Header&) = delete;
    Header& operator=(const Header&) = delete;

    Result<Bytes> make() {
        if (!info_)
            return Failure{Reason::unsupported, "libpng cannot be used"};
        png_set_benign_errors(png_, 1); // a profile that libpng rejects is left out
        const bool isMade = succeedsInLibrary(png_, [this] {
            png_set_write_fn(png_, &output_, writeOutput, nullptr);
            setInformation();
            png_write_info(png_, info_);
        });
        if (isMade)
            return std::move(output_.bytes);
        if (output_.outOfMemory)
            throw std::bad_alloc();
        return Failure{Reason::unsupported,
                       std::string("the PNG picture cannot be written: ") + message_.text};
    }

private:
    static void writeOutput(png_structp png, png_bytep bytes, std::size_t count) {
        if (!static_cast<Output*>(png_get_io_ptr(png))->append(ByteView(bytes, count)))
            png_error(png, "not enough memory");
    }

    void setInformation() {
        png_set_IHDR(png_, info_, format_.width, format_.height,
                     static_cast<int>(8 * format_.bytesPerSample()), colorType(format_), PNG_INTERLACE_NONE,
                     PNG_COMPRESSION_TYPE_BASE, PNG_FILTER_TYPE_BASE);
        png_set_pHYs(png_, info_, perMeter(resolution_.horizontal), perMeter(resolution_.vertical),
                     PNG_RESOLUTION_METER);
        if (!profile_.empty())
            png_set_iCCP(png_, info_, "ICC Profile", PNG_COMPRESSION_TYPE_BASE, profile_.data(),
                         static_cast<png_uint_32>(profile_.size()));
    }

    const RowFormat format_;
    const Bytes profile_; ///< empty for none
    const Resolution resolution_;
    Message message_;
    Output output_;
    png_structp png_ = nullptr;
    png_infop info_ = nullptr;
};

Result<void> writePixels(RowSource& rows, Bytes& file) {
    const std::size_t threads = usefulThreads(rows.format());
    ImageDataWriter writer(file, threads > 1 ? threads : 0);
    RowFilter filter(rows.format());
    Bytes row(rows.format().bytesPerRow());
    for (std::uint32_t y = 0; y < rows.format().height; ++y) {
        TRY(rows.readRow(row));
        filter.filter(row, writer.extend(filter.filteredBytes()));
    }
    writer.finish();
    return {};
}

} // namespace

Result<Bytes> encode(RowSource& rows, const EncodingOptions& options) {
    if (!rows.format().isWithinLimits())
        return Failure{rows.format().pixels() == 0 ? Reason::empty : Reason::tooLarge,
                       "a picture of this size cannot become a PNG"};
    Bytes file = TRY(Header(rows.format(), options).make());
    TRY(writePixels(rows, file));
    appendChunk("IEND", {}, file);
    return file;
}

} // namespace kestrine::png
