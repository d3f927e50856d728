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

/// What is drawn, and with what.
struct Drawable {
    const Functions& library;
    Fonts* fonts; ///< null if the drawing needs none
    Bytes text;
    NaturalSize size = {};
};

std::unique_lock<std::mutex> useOf(Fonts* fonts) {
    return fonts == nullptr ? std::unique_lock<std::mutex>() : fonts->use();
}

/// Draws bands of rows, one after another, and wide ones in parts.
class DrawnRows final : public RowSource {
public:
    DrawnRows(std::shared_ptr<const Drawable> drawable, const AxisMap& x, const AxisMap& y)
        : RowSource({x.outSize, y.outSize, ColorModel::rgb, true, SampleDepth::bits8}),
          drawable_(std::move(drawable)), x_(x), y_(y) {}

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
        const auto lock = useOf(drawable_->fonts);
        const DocumentPointer document = TRY(readDocument(drawable_->library, drawable_->text));
        const std::uint32_t tileWidth = std::min(format().width, maxTileWidth);
        bandHeight_ = static_cast<std::uint32_t>(
            std::clamp<std::uint64_t>(pixelsPerTile / tileWidth, 1, format().height - next_));
        band_.clear();
        for (std::uint32_t left = 0; left < format().width; left += tileWidth) {
            const std::uint32_t width = std::min(tileWidth, format().width - left);
            const Area area{x_.scale, y_.scale,   x_.offset + left / x_.scale, y_.offset + next_ / y_.scale,
                            width,    bandHeight_};
            band_.push_back(TRY(drawArea(drawable_->library, *document, drawable_->size, area)));
        }
        next_ += bandHeight_;
        bandRow_ = 0;
        return {};
    }

    const std::shared_ptr<const Drawable> drawable_;
    const AxisMap x_, y_;
    std::vector<DrawnArea> band_; ///< side by side
    std::uint32_t bandHeight_ = 0;
    std::uint32_t bandRow_ = 0; ///< the next row, in the band
    std::uint32_t next_ = 0;    ///< the row after the band
};

class Decoder final : public ImageDecoder {
public:
    explicit Decoder(std::shared_ptr<const Drawable> drawable) : drawable_(std::move(drawable)) {
        constexpr std::uint64_t bytesPerPixel = 4;
        const auto [width, height] = drawable_->size;
        frames_.push_back({.format = {width, height, ColorModel::rgb, true, SampleDepth::bits8},
                           .isDrawn = true,
                           .storedBitsPerPixel = 1, // the length of the file says nothing about the size
                           .heldBytes = bytesPerPixel * pixelsPerTile});
    }

    Result<RowSourcePointer> rows(std::size_t, int) const override {
        const auto [width, height] = drawable_->size;
        return drawnRows(0, AxisMap::filling(width, width), AxisMap::filling(height, height));
    }

    Result<RowSourcePointer> drawnRows(std::size_t, const AxisMap& x, const AxisMap& y) const override {
        return RowSourcePointer(std::make_unique<DrawnRows>(drawable_, x, y));
    }

    FileContents contents() const override { return {FileContents::Kind::drawing}; }

private:
    const std::shared_ptr<const Drawable> drawable_;
};

Result<std::unique_ptr<ImageDecoder>> openDrawable(Drawable drawable) {
    const auto lock = useOf(drawable.fonts);
    const DocumentPointer document = TRY(readDocument(drawable.library, drawable.text));
    drawable.size = naturalSize(drawable.library, *document);
    auto decoder = std::make_unique<Decoder>(std::make_shared<const Drawable>(std::move(drawable)));
    if (!decoder->frames().front().format.isWithinLimits())
        return Failure{Reason::tooLarge, "the SVG drawing has too many pixels"};
    return std::unique_ptr<ImageDecoder>(std::move(decoder));
}

Result<std::unique_ptr<ImageDecoder>> open(std::shared_ptr<const ByteReader> reader) {
    const Result<Functions>& library = installedFunctions();
    if (!library)
        return library.failure();
    Bytes text = TRY(readText(*reader));
    if (mayOpenFiles(text))
        return Failure{Reason::otherFormat, "the SVG drawing needs fonts"};
    return openDrawable({*library, nullptr, std::move(text)});
}

Result<std::unique_ptr<ImageDecoder>> openWithFonts(std::shared_ptr<const ByteReader> reader) {
    const Result<Functions>& library = installedFunctions();
    if (!library)
        return library.failure();
    return openDrawable({*library, &Fonts::opened(*library), TRY(readText(*reader))});
}

void openLibraries() {
    (void)installedZlib();
    (void)installedFunctions();
}

void openLibrariesAndFonts() {
    openLibraries();
    if (const Result<Functions>& library = installedFunctions())
        (void)Fonts::opened(*library);
}

bool recognisesNothing(ByteView) { return false; }

} // namespace

const ImageCodec codecWithFonts{"SVG", recognisesNothing, openWithFonts, openLibrariesAndFonts};
const ImageCodec codec{"SVG", isDrawing, open, openLibraries, &codecWithFonts};

} // namespace kestrine::svg
