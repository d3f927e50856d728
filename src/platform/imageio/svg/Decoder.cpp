// Reads SVG drawings, plain or compressed (svgz). A drawing has a natural size, but is drawn in the size of
// the result.

#include "platform/imageio/Codecs.h"
#include "platform/imageio/svg/Drawing.h"
#include "platform/imageio/svg/Fonts.h"
#include "platform/imageio/svg/Text.h"
#include "platform/imageio/svg/Zlib.h"

#include <algorithm>

namespace kestrine::svg {

namespace {

constexpr std::uint32_t maxTileWidth = 16384;
constexpr std::uint64_t pixelsPerTile = std::uint64_t{1} << 22;

/// Draws bands of rows, one after another, and wide ones in parts.
class DrawnRows final : public RowSource {
public:
    DrawnRows(const Functions& library, std::shared_ptr<const Bytes> text, NaturalSize size, const AxisMap& x,
              const AxisMap& y)
        : RowSource({x.outSize, y.outSize, ColorModel::rgb, true, SampleDepth::bits8}), library_(library),
          text_(std::move(text)), size_(size), x_(x), y_(y) {}

    Result<void> readRow(std::span<std::uint8_t> row) override {
        if (bandRow_ == bandHeight_)
            TRY(drawBand());
        for (const DrawnArea& tile : band_) {
            tile.copyRow(bandRow_, row.first(4 * std::size_t{tile.width()}));
            row = row.subspan(4 * std::size_t{tile.width()});
        }
        ++bandRow_;
        return {};
    }

private:
    Result<void> drawBand() {
        Fonts& fonts = Fonts::opened(library_);
        const auto lock = fonts.use();
        const DocumentPointer document = TRY(readDocument(library_, *text_));
        const std::uint32_t tileWidth = std::min(format().width, maxTileWidth);
        bandHeight_ = static_cast<std::uint32_t>(
            std::clamp<std::uint64_t>(pixelsPerTile / tileWidth, 1, format().height - next_));
        band_.clear();
        for (std::uint32_t left = 0; left < format().width; left += tileWidth) {
            const std::uint32_t width = std::min(tileWidth, format().width - left);
            const Area area{x_.scale, y_.scale,   x_.offset + left / x_.scale, y_.offset + next_ / y_.scale,
                            width,    bandHeight_};
            band_.push_back(TRY(drawArea(library_, *document, size_, area)));
        }
        next_ += bandHeight_;
        bandRow_ = 0;
        return {};
    }

    const Functions& library_;
    const std::shared_ptr<const Bytes> text_;
    const NaturalSize size_;
    const AxisMap x_, y_;
    std::vector<DrawnArea> band_; ///< side by side
    std::uint32_t bandHeight_ = 0;
    std::uint32_t bandRow_ = 0; ///< the next row, in the band
    std::uint32_t next_ = 0;    ///< the row after the band
};

class Decoder final : public ImageDecoder {
public:
    Decoder(const Functions& library, std::shared_ptr<const Bytes> text, NaturalSize size)
        : library_(library), text_(std::move(text)), size_(size) {
        constexpr std::uint64_t bytesPerPixel = 4;
        frames_.push_back({.format = {size.width, size.height, ColorModel::rgb, true, SampleDepth::bits8},
                           .isDrawn = true,
                           .storedBitsPerPixel = 1, // the length of the file says nothing about the size
                           .heldBytes = bytesPerPixel * pixelsPerTile});
    }

    Result<RowSourcePointer> rows(std::size_t, int) const override {
        return drawnRows(0, AxisMap::filling(size_.width, size_.width),
                         AxisMap::filling(size_.height, size_.height));
    }

    Result<RowSourcePointer> drawnRows(std::size_t, const AxisMap& x, const AxisMap& y) const override {
        return RowSourcePointer(std::make_unique<DrawnRows>(library_, text_, size_, x, y));
    }

    FileContents contents() const override { return {FileContents::Kind::drawing}; }

private:
    const Functions& library_;
    const std::shared_ptr<const Bytes> text_;
    const NaturalSize size_;
};

Result<std::unique_ptr<ImageDecoder>> open(std::shared_ptr<const ByteReader> reader) {
    const Result<Functions>& library = installedFunctions();
    if (!library)
        return library.failure();
    const auto text = std::make_shared<const Bytes>(TRY(readText(*reader)));
    Fonts& fonts = Fonts::opened(*library);
    const auto lock = fonts.use();
    const DocumentPointer document = TRY(readDocument(*library, *text));
    const NaturalSize size = naturalSize(*library, *document);
    auto decoder = std::make_unique<Decoder>(*library, text, size);
    if (!decoder->frames().front().format.isWithinLimits())
        return Failure{Reason::tooLarge, "the SVG drawing has too many pixels"};
    return std::unique_ptr<ImageDecoder>(std::move(decoder));
}

void openLibraries() {
    (void)installedZlib();
    if (const Result<Functions>& library = installedFunctions())
        (void)Fonts::opened(*library);
}

} // namespace

const ImageCodec codec{"SVG", isDrawing, open, openLibraries};

} // namespace kestrine::svg
