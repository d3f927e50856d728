#include "platform/imageio/tiff/Rendering.h"

#include "platform/coregraphics/Premultiplication.h"

#include <algorithm>

namespace kestrine::tiff {

namespace {

class RenderedRows final : public RowSource {
public:
    RenderedRows(std::unique_ptr<File> file, std::shared_ptr<const Page> page)
        : RowSource(page->format), file_(std::move(file)), page_(std::move(page)) {}

    Result<void> readRow(std::span<std::uint8_t> row) override {
        const std::uint32_t inBlock = y_ % page_->blockRows;
        if (inBlock == 0 && !(page_->tileWidth ? renderTiles() : renderStrip()))
            return file_->failure();
        ++y_;
        unpack(block_.data() + std::size_t{inBlock} * format().width, row);
        return {};
    }

private:
    /// libtiff renders from bottom to top.
    bool renderStrip() {
        const std::uint32_t rows = std::min(page_->blockRows, format().height - y_);
        block_.resize(std::size_t{format().width} * page_->blockRows);
        if (!library().renderStrip(file_->handle(), y_, block_.data(), stopOnError))
            return false;
        for (std::uint32_t top = 0, bottom = rows - 1; top < bottom; ++top, --bottom)
            std::swap_ranges(rowOfBlock(top), rowOfBlock(top) + format().width, rowOfBlock(bottom));
        return true;
    }

    bool renderTiles() {
        const std::uint32_t width = page_->tileWidth, rows = page_->blockRows;
        tile_.resize(std::size_t{width} * rows);
        block_.resize(std::size_t{format().width} * rows);
        for (std::uint32_t x = 0; x < format().width; x += width) {
            if (!library().renderTile(file_->handle(), x, y_, tile_.data(), stopOnError))
                return false;
            for (std::uint32_t row = 0; row < rows; ++row)
                std::copy_n(tile_.data() + std::size_t{rows - 1 - row} * width,
                            std::min(width, format().width - x), rowOfBlock(row) + x);
        }
        return true;
    }

    std::uint32_t* rowOfBlock(std::uint32_t row) { return block_.data() + std::size_t{row} * format().width; }

    /// libtiff renders premultiplied colours.
    void unpack(const std::uint32_t* pixels, std::span<std::uint8_t> row) {
        samples_.clear();
        for (std::uint32_t x = 0; x < format().width; ++x) {
            const std::uint32_t pixel = pixels[x];
            for (const std::uint32_t sample : {TIFFGetR(pixel), TIFFGetG(pixel), TIFFGetB(pixel)})
                samples_.push_back(static_cast<std::uint8_t>(sample));
            if (format().hasAlpha)
                samples_.push_back(static_cast<std::uint8_t>(TIFFGetA(pixel)));
        }
        if (format().hasAlpha)
            undoPremultiplication(4, samples_);
        std::ranges::copy(samples_, row.begin());
    }

    const Functions& library() const { return file_->library(); }

    static constexpr int stopOnError = 1;

    const std::unique_ptr<File> file_;
    const std::shared_ptr<const Page> page_;
    std::vector<std::uint32_t> block_, tile_; ///< pixels as libtiff packs them
    Bytes samples_;
    std::uint32_t y_ = 0;
};

} // namespace

RowSourcePointer renderedRowsOfTIFF(std::unique_ptr<File> file, std::shared_ptr<const Page> page) {
    return std::make_unique<RenderedRows>(std::move(file), std::move(page));
}

} // namespace kestrine::tiff
