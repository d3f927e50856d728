// Reads the largest picture of ICO and CUR files.

#include "platform/imageio/Codecs.h"
#include "platform/imageio/InvisiblePicture.h"
#include "platform/imageio/PartReader.h"
#include "platform/imageio/bmp/Rows.h"
#include "platform/imageio/ico/Directory.h"

#include <algorithm>

namespace kestrine::ico {

namespace {

/// The mask of a picture that is a BMP: a bit for each pixel, set where it is transparent. It follows the
/// colours in the same order of rows.
struct Mask {
    std::uint64_t offset = 0;
    bool isStored = true; ///< otherwise every pixel is opaque

    static std::uint64_t stride(std::uint32_t width) { return (std::uint64_t{width} + 31) / 32 * 4; }
};

RowFormat withAlpha(RowFormat format) {
    format.hasAlpha = true;
    return format;
}

/// The colours of a BMP with alpha from the mask.
class MaskedRows final : public RowSource {
public:
    MaskedRows(RowSourcePointer colors, std::shared_ptr<const ByteReader> reader, const bmp::Header& header,
               const Mask& mask)
        : RowSource(withAlpha(header.format())), colors_(std::move(colors)), reader_(std::move(reader)),
          header_(header), mask_(mask), bits_((std::size_t{header.width} + 7) / 8),
          row_(colors_->format().bytesPerRow()) {}

    Result<void> readRow(std::span<std::uint8_t> row) override {
        TRY(colors_->readRow(row_));
        TRY(readMask());
        for (std::size_t x = 0; x < format().width; ++x) {
            std::copy_n(row_.begin() + static_cast<std::ptrdiff_t>(3 * x), 3,
                        row.begin() + static_cast<std::ptrdiff_t>(4 * x));
            row[4 * x + 3] = (bits_[x / 8] << x % 8 & 0x80) != 0 ? 0 : 255;
        }
        return {};
    }

private:
    Result<void> readMask() {
        const std::uint64_t row = header_.storedRow(y_++);
        if (!mask_.isStored)
            return {};
        if (reader_->readAt(mask_.offset + row * Mask::stride(format().width), bits_) != bits_.size())
            return Failure{Reason::truncated, "the icon ends in the mask of its picture"};
        return {};
    }

    const RowSourcePointer colors_; ///< without alpha
    const std::shared_ptr<const ByteReader> reader_;
    const bmp::Header header_;
    const Mask mask_;
    Bytes bits_, row_;
    std::uint32_t y_ = 0;
};

/// A picture that is a BMP. If it has 32 bits per pixel, the fourth byte is alpha, unless that is 0
/// everywhere; then, and with fewer bits, the mask decides.
class Decoder final : public ImageDecoder {
public:
    /// `reader` shows the BMP after room for the header of a file.
    Decoder(std::shared_ptr<const ByteReader> reader, bmp::Header header, const Mask& mask)
        : reader_(std::move(reader)), header_(std::move(header)), mask_(mask) {
        frames_.push_back({.format = withAlpha(header_.format()),
                           .profile = header_.profile,
                           .isUncompressed = true,
                           .storedBitsPerPixel = header_.bitsPerPixel});
    }

    Result<RowSourcePointer> rows(std::size_t, int) const override {
        if (header_.bitsPerPixel != 32)
            return maskedRows();
        const bool usesMask = TRY(isInvisible([this] { return rowsWithOwnAlpha(); }));
        return usesMask ? maskedRows() : rowsWithOwnAlpha();
    }

private:
    Result<RowSourcePointer> rowsWithOwnAlpha() const {
        constexpr std::uint32_t highestByte = 0xFF000000;
        bmp::Header header = header_;
        if (header.masks[3] == 0)
            header.masks[3] = highestByte;
        return bmp::rowsOfBMP(reader_, header);
    }

    Result<RowSourcePointer> maskedRows() const {
        bmp::Header header = header_;
        header.masks[3] = 0;
        RowSourcePointer colors = TRY(bmp::rowsOfBMP(reader_, header));
        return RowSourcePointer(std::make_unique<MaskedRows>(std::move(colors), reader_, header, mask_));
    }

    const std::shared_ptr<const ByteReader> reader_;
    const bmp::Header header_;
    const Mask mask_;
};

Result<std::unique_ptr<ImageDecoder>> openBMP(const std::shared_ptr<const ByteReader>& file,
                                              const Entry& entry) {
    // The directory stands before every picture and is longer than the header of a BMP file.
    const std::shared_ptr<const ByteReader> reader = readerFrom(file, entry.offset - bmp::fileHeaderLength);
    bmp::Header header = TRY(bmp::readIconHeader(*reader));
    header.height /= 2;
    if (header.isRunLength)
        return Failure{Reason::unsupported, "the icon has a picture with run-length codes"};
    if (header.format().pixels() == 0)
        return Failure{Reason::empty, "the icon has no pixels"};
    if (!header.format().isWithinLimits())
        return Failure{Reason::tooLarge, "the icon has too many pixels"};
    Mask mask{header.pixelOffset + header.stride() * header.height};
    mask.isStored =
        mask.offset - bmp::fileHeaderLength + Mask::stride(header.width) * header.height <= entry.length;
    return std::unique_ptr<ImageDecoder>(std::make_unique<Decoder>(reader, std::move(header), mask));
}

Result<std::unique_ptr<ImageDecoder>> open(std::shared_ptr<const ByteReader> reader) {
    const Entry entry = TRY(largestEntry(*reader));
    if (entry.isPNG)
        return png::codec.open(readerFrom(std::move(reader), entry.offset));
    if (entry.offset < bmp::fileHeaderLength)
        return Failure{Reason::malformed, "the icon has a picture inside its directory"};
    return openBMP(reader, entry);
}

} // namespace

const ImageCodec codec = {"ICO", isIcon, open};

} // namespace kestrine::ico
