// Reads TGA files row by row: colours, greys and indices, plain or run-length coded, stored from any corner.

#include "platform/coregraphics/Premultiplication.h"
#include "platform/coregraphics/RowStages.h"
#include "platform/imageio/Codecs.h"
#include "platform/imageio/InvisiblePicture.h"
#include "platform/imageio/tga/StoredRows.h"

#include <algorithm>

namespace kestrine::tga {

namespace {

bool areIndices(Pixels pixels) { return pixels == Pixels::index8 || pixels == Pixels::index16; }

class Rows final : public RowSource {
public:
    Rows(std::unique_ptr<StoredRows> stored, std::shared_ptr<const Header> header)
        : RowSource(header->format), stored_(std::move(stored)), header_(std::move(header)),
          bytes_(header_->bytesPerStoredRow()) {}

    Result<void> readRow(std::span<std::uint8_t> row) override {
        TRY(stored_->read(header_->isTopDown ? y_ : format().height - 1 - y_, bytes_));
        ++y_;
        if (areIndices(header_->pixels))
            lookUpColors(row);
        else
            convertPixels(header_->pixels, format().hasAlpha, bytes_, format().width, row.data());
        if (header_->alpha == Alpha::premultiplied)
            undoPremultiplication(format(), row);
        return {};
    }

private:
    std::size_t indexAt(std::size_t x) const {
        return header_->pixels == Pixels::index8 ? bytes_[x]
                                                 : bytes_[2 * x] | std::size_t{bytes_[2 * x + 1]} << 8;
    }

    /// Indices outside the colour map are black.
    void lookUpColors(std::span<std::uint8_t> row) const {
        const ColorMap& map = header_->colors;
        const std::size_t channels = format().channels();
        for (std::size_t x = 0; x < format().width; ++x) {
            const std::size_t index = indexAt(x), at = (index - map.first) * channels;
            const std::span<std::uint8_t> pixel = row.subspan(x * channels, channels);
            if (index >= map.first && at < map.entries.size())
                std::copy_n(map.entries.begin() + static_cast<std::ptrdiff_t>(at), channels, pixel.begin());
            else
                std::ranges::copy(ByteView(black).first(channels), pixel.begin());
        }
    }

    static constexpr std::array<std::uint8_t, 4> black = {0, 0, 0, 255};

    const std::unique_ptr<StoredRows> stored_;
    const std::shared_ptr<const Header> header_;
    Bytes bytes_; ///< of a stored row
    std::uint32_t y_ = 0;
};

class Decoder final : public ImageDecoder {
public:
    Decoder(std::shared_ptr<const ByteReader> reader, Header header)
        : reader_(std::move(reader)), header_(std::make_shared<const Header>(std::move(header))) {
        frames_.push_back({.format = header_->format,
                           .isUncompressed = !header_->isRunLength,
                           .storedBitsPerPixel = header_->pixels == Pixels::bits
                                                     ? 1u
                                                     : static_cast<unsigned>(8 * bytesOf(header_->pixels))});
    }

    Result<RowSourcePointer> rows(std::size_t, int) const override {
        const RowOpener open = [this]() -> Result<RowSourcePointer> {
            std::unique_ptr<StoredRows> stored = TRY(openStoredRows(reader_, *header_));
            RowSourcePointer rows = std::make_unique<Rows>(std::move(stored), header_);
            return header_->isRightToLeft ? mirroredRows(std::move(rows)) : std::move(rows);
        };
        return header_->format.hasAlpha ? rowsOpaqueIfInvisible(open) : open();
    }

    Result<Bytes> colorTable() const override {
        constexpr std::size_t maximumColors = 256;
        const Bytes& entries = header_->colors.entries;
        return header_->format.hasAlpha || entries.size() > 3 * maximumColors ? Bytes{} : entries;
    }

private:
    const std::shared_ptr<const ByteReader> reader_;
    const std::shared_ptr<const Header> header_;
};

Result<std::unique_ptr<ImageDecoder>> open(std::shared_ptr<const ByteReader> reader) {
    Header header = TRY(readHeader(*reader));
    if (!header.format.isWithinLimits())
        return Failure{Reason::tooLarge, "the TGA picture has too many pixels"};
    return std::unique_ptr<ImageDecoder>(std::make_unique<Decoder>(std::move(reader), std::move(header)));
}

} // namespace

const ImageCodec codec = {"TGA", isTGA, open};

} // namespace kestrine::tga
