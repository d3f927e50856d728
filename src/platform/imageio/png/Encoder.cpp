// Writes PNG: 8 or 16 bits, grey or RGB, with or without alpha, never interlaced. libpng writes everything
// before the pixels; our own code filters and compresses the pixels (fast/RowFilter.h,
// fast/ImageDataWriter.h). With the highest effort it tries several filters (thorough/ThoroughPiece.h) and
// stores pictures of at most 256 colours with a palette (thorough/IndexedPicture.h).

#include "platform/coregraphics/RowsAhead.h"
#include "platform/imageio/Codecs.h"
#include "platform/imageio/png/Library.h"
#include "platform/imageio/png/fast/BigEndianWords.h"
#include "platform/imageio/png/fast/Chunk.h"
#include "platform/imageio/png/fast/ImageDataWriter.h"
#include "platform/imageio/png/fast/RowFilter.h"
#include "platform/imageio/png/thorough/IndexedPicture.h"
#include "platform/imageio/png/thorough/ThoroughPiece.h"

#include <algorithm>
#include <cmath>
#include <new>

namespace kestrine::png {

namespace {

/// libdeflate's level for the lower efforts. For photographs level 6 takes nearly twice as long as 4 and
/// saves 3 % of the bytes; zlib's level 5 takes four times as long and saves 1 %.
constexpr int fastCompression = 1, normalCompression = 4;

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
    return static_cast<png_uint_32>(std::lround(perInch / metresPerInch));
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
    Header(const RowFormat& format, const EncodingOptions& options, const IndexedPicture* indexed = nullptr)
        : format_(format), indexed_(indexed), profile_(paddedProfile(options.profile)), exif_(options.exif),
          resolution_(plausibleResolution(options.resolution.horizontal, options.resolution.vertical)) {
        if (installedFunctions())
            png_ = libpng().createWriteStruct(PNG_LIBPNG_VER_STRING, &message_, jumpOnError, keepWarning);
        info_ = png_ ? libpng().createInfoStruct(png_) : nullptr;
    }
    ~Header() {
        if (png_ != nullptr)
            libpng().destroyWriteStruct(&png_, &info_);
    }
    Header(const Header&) = delete;
    Header& operator=(const Header&) = delete;

    Result<Bytes> make() {
        if (!installedFunctions())
            return installedFunctions().failure();
        if (!info_)
            return Failure{Reason::unsupported, "libpng cannot be used"};
        libpng().setBenignErrors(png_, 1); // a profile that libpng rejects is left out
        const bool isMade = succeedsInLibrary(png_, [this] {
            libpng().setWriteFn(png_, &output_, writeOutput, nullptr);
            setInformation();
            libpng().writeInfo(png_, info_);
        });
        if (isMade) {
            if (!exif_.empty())
                appendChunk("eXIf", {exif_}, output_.bytes);
            return std::move(output_.bytes);
        }
        if (output_.outOfMemory)
            throw std::bad_alloc();
        return Failure{Reason::unsupported,
                       std::string("the PNG picture cannot be written: ") + message_.text};
    }

private:
    static void writeOutput(png_structp png, png_bytep bytes, std::size_t count) {
        if (!static_cast<Output*>(libpng().getIoPtr(png))->append(ByteView(bytes, count)))
            libpng().fail(png, "not enough memory");
    }

    void setInformation() {
        const int bits =
            indexed_ != nullptr ? indexed_->bits() : static_cast<int>(8 * format_.bytesPerSample());
        libpng().setIHDR(png_, info_, format_.width, format_.height, bits,
                         indexed_ != nullptr ? PNG_COLOR_TYPE_PALETTE : colorType(format_),
                         PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_BASE, PNG_FILTER_TYPE_BASE);
        if (indexed_ != nullptr)
            setPalette();
        libpng().setPHYs(png_, info_, perMeter(resolution_.horizontal), perMeter(resolution_.vertical),
                         PNG_RESOLUTION_METER);
        if (!profile_.empty())
            libpng().setICCP(png_, info_, "ICC Profile", PNG_COMPRESSION_TYPE_BASE, profile_.data(),
                             static_cast<png_uint_32>(profile_.size()));
    }

    void setPalette() {
        std::vector<png_color> colors;
        Bytes alphas; // colours without one are opaque
        for (const PaletteColor& color : indexed_->palette) {
            colors.push_back({color.red, color.green, color.blue});
            if (color.alpha != 255)
                alphas.push_back(color.alpha);
        }
        libpng().setPLTE(png_, info_, colors.data(), static_cast<int>(colors.size()));
        if (!alphas.empty())
            libpng().setTRNS(png_, info_, alphas.data(), static_cast<int>(alphas.size()), nullptr);
    }

    const RowFormat format_;
    const IndexedPicture* const indexed_; ///< null for pictures without palette
    const Bytes profile_;                 ///< empty for none
    const ByteView exif_;                 ///< empty for none
    const Resolution resolution_;
    Message message_;
    Output output_;
    png_structp png_ = nullptr;
    png_infop info_ = nullptr;
};

std::size_t furtherThreads(const RowFormat& format) {
    const std::size_t threads = usefulThreads(format);
    return threads > 1 ? threads : 0;
}

Result<void> writePixels(RowSource& rows, int compression, ByteSink& file) {
    ImageDataWriter writer(file, furtherThreads(rows.format()), [compression](ByteView piece, bool isLast) {
        return deflatePiece(piece, isLast, compression);
    });
    RowFilter filter(rows.format());
    Bytes row(rows.format().bytesPerRow());
    for (std::uint32_t y = 0; y < rows.format().height; ++y) {
        TRY(rows.readRow(row));
        filter.filter(row, writer.extend(filter.filteredBytes()));
    }
    return writer.finish();
}

ImageDataWriter thoroughWriter(const RowFormat& format, const StoredRowShape& shape, ByteSink& file) {
    return {file, furtherThreads(format),
            [shape](ByteView rows, bool isLast) { return deflateThoroughly(rows, shape, isLast); }};
}

Result<void> writePixelsThoroughly(RowSource& rows, ByteSink& file) {
    const RowFormat& format = rows.format();
    ImageDataWriter writer = thoroughWriter(format, {format.bytesPerRow(), format.bytesPerPixel()}, file);
    Bytes row(format.bytesPerRow());
    for (std::uint32_t y = 0; y < format.height; ++y) {
        TRY(rows.readRow(row));
        std::uint8_t* const stored = writer.extend(row.size());
        if (format.depth == SampleDepth::bits16)
            copyBigEndianWords(row, stored);
        else
            std::ranges::copy(row, stored);
    }
    return writer.finish();
}

Result<void> writeIndices(const IndexedPicture& picture, const RowFormat& format, ByteSink& file) {
    const auto bits = static_cast<std::size_t>(picture.bits()), perByte = 8 / bits;
    const std::size_t rowBytes = (picture.width + perByte - 1) / perByte;
    ImageDataWriter writer = thoroughWriter(format, {rowBytes, 1}, file);
    const std::uint8_t* index = picture.indices.data();
    for (std::uint32_t y = 0; y < picture.height; ++y) {
        std::uint8_t* const stored = writer.extend(rowBytes);
        std::fill_n(stored, rowBytes, std::uint8_t{0});
        for (std::size_t x = 0; x < picture.width; ++x)
            stored[x / perByte] |= static_cast<std::uint8_t>(*index++ << (8 - bits - x % perByte * bits));
    }
    return writer.finish();
}

/// The maximum number of colours for a palette. With more, it would not save bytes or cannot be used.
std::size_t maxColorsOfPalette(const RowFormat& format, const EncodingOptions& options) {
    constexpr std::size_t lessThan8Bits = 16, allIndices = 256;
    const bool isGray = format.model == ColorModel::gray;
    if (format.depth != SampleDepth::bits8 || (isGray && options.profile != nullptr))
        return 0; // the profile of a palette is one for RGB
    return isGray && !format.hasAlpha ? lessThan8Bits : allIndices;
}

Result<void> encodeThoroughly(RowSource& rows, const EncodingOptions& options, ByteSink& file) {
    const RowFormat format = rows.format();
    RowSourcePointer regained;
    if (const std::size_t maxColors = maxColorsOfPalette(format, options); maxColors > 0) {
        auto either = TRY(indexedIfPossible(rows, maxColors));
        if (const auto* indexed = std::get_if<IndexedPicture>(&either)) {
            const Bytes head = TRY(Header(format, options, indexed).make());
            TRY(file.write(head));
            return writeIndices(*indexed, format, file);
        }
        regained = std::get<RowSourcePointer>(std::move(either));
    }
    const Bytes head = TRY(Header(format, options).make());
    TRY(file.write(head));
    return writePixelsThoroughly(regained ? *regained : rows, file);
}

Result<void> encodeQuickly(RowSource& rows, const EncodingOptions& options, ByteSink& file) {
    const Bytes head = TRY(Header(rows.format(), options).make());
    TRY(file.write(head));
    const bool isFast = options.effort == Effort::fast;
    return writePixels(rows, isFast ? fastCompression : normalCompression, file);
}

} // namespace

void openLibraries() { (void)installedFunctions(); }

Result<void> encode(RowSource& rows, const EncodingOptions& options, ByteSink& file) {
    if (!rows.format().isWithinLimits())
        return Failure{rows.format().pixels() == 0 ? Reason::empty : Reason::tooLarge,
                       "a picture of this size cannot become a PNG"};
    TRY(options.effort == Effort::max ? encodeThoroughly(rows, options, file)
                                      : encodeQuickly(rows, options, file));
    Bytes end;
    appendChunk("IEND", {}, end);
    return file.write(end);
}

} // namespace kestrine::png
