#include "platform/imageio/tiff/StoredRows.h"

#include "platform/imageio/tiff/OwnBlocks.h"

#include <algorithm>

namespace kestrine::tiff {

namespace {

/// Strips up to this size are decoded at once, which is faster; larger ones row by row.
constexpr std::uint64_t maxWholeStripBytes = 4 << 20;

class WholeStrips final : public StoredRows {
public:
    WholeStrips(std::unique_ptr<File> file, std::size_t rowBytes, const Page& page, unsigned plane,
                std::unique_ptr<OwnBlocks> own)
        : StoredRows(std::move(file), rowBytes, page.blockRows), plane_(static_cast<std::uint16_t>(plane)),
          height_(page.format.height), own_(std::move(own)) {}

private:
    bool readBlock(std::uint32_t y, Bytes& block) override {
        const std::size_t wanted = rowBytes() * std::min(blockRows(), height_ - y);
        const std::uint32_t strip = library().computeStrip(handle(), y, plane_);
        if (own_ && own_->decode(strip, rowBytes(), std::span(block).first(wanted)))
            return true;
        const tmsize_t got =
            library().readEncodedStrip(handle(), strip, block.data(), static_cast<tmsize_t>(wanted));
        return got == static_cast<tmsize_t>(wanted);
    }

    const std::uint16_t plane_;
    const std::uint32_t height_;
    const std::unique_ptr<OwnBlocks> own_; ///< null if libtiff decodes all strips
};

class SingleRows final : public StoredRows {
public:
    SingleRows(std::unique_ptr<File> file, std::size_t rowBytes, unsigned plane)
        : StoredRows(std::move(file), rowBytes, 1), plane_(static_cast<std::uint16_t>(plane)) {}

    std::uint32_t independentRows() const override { return maximumSide + 1; }

private:
    bool readBlock(std::uint32_t y, Bytes& block) override {
        return library().readScanline(handle(), block.data(), y, plane_) == 1;
    }

    const std::uint16_t plane_;
};

class TileRows final : public StoredRows {
public:
    TileRows(std::unique_ptr<File> file, std::size_t rowBytes, const Page& page, unsigned plane,
             std::unique_ptr<OwnBlocks> own)
        : StoredRows(std::move(file), rowBytes, page.blockRows), plane_(static_cast<std::uint16_t>(plane)),
          width_(page.format.width), tileWidth_(page.tileWidth), own_(std::move(own)) {}

private:
    bool readBlock(std::uint32_t y, Bytes& block) override {
        tile_.resize(library().tileSize(handle()));
        const std::size_t tileRowBytes = library().tileRowSize(handle());
        std::uint8_t* to = block.data();
        for (std::uint32_t x = 0; x < width_; x += tileWidth_, to += tileRowBytes) {
            if (!readTile(library().computeTile(handle(), x, y, 0, plane_), tileRowBytes))
                return false;
            for (std::uint32_t row = 0; row < blockRows(); ++row)
                std::copy_n(tile_.data() + row * tileRowBytes, tileRowBytes, to + row * rowBytes());
        }
        return true;
    }

    /// Decodes a tile into tile_.
    bool readTile(std::uint32_t tile, std::size_t tileRowBytes) {
        const auto wanted = static_cast<tmsize_t>(tile_.size());
        return (own_ && own_->decode(tile, tileRowBytes, tile_))
               || library().readEncodedTile(handle(), tile, tile_.data(), wanted) == wanted;
    }

    const std::uint16_t plane_;
    const std::uint32_t width_, tileWidth_;
    const std::unique_ptr<OwnBlocks> own_; ///< null if libtiff decodes all tiles
    Bytes tile_;
};

} // namespace

std::unique_ptr<StoredRows> StoredRows::create(std::unique_ptr<File> file, const Page& page, unsigned plane,
                                               BlockDecoder decoder) {
    const Functions& library = file->library();
    std::unique_ptr<OwnBlocks> own =
        decoder == BlockDecoder::ownFirst ? OwnBlocks::create(*file, page) : nullptr;
    if (page.tileWidth) {
        const std::size_t across = (page.format.width + page.tileWidth - 1) / page.tileWidth;
        const std::size_t rowBytes = across * library.tileRowSize(file->handle());
        return std::unique_ptr<StoredRows>(
            new TileRows(std::move(file), rowBytes, page, plane, std::move(own)));
    }
    const std::size_t rowBytes = library.scanlineSize(file->handle());
    if (rowBytes <= maxWholeStripBytes / page.blockRows)
        return std::unique_ptr<StoredRows>(
            new WholeStrips(std::move(file), rowBytes, page, plane, std::move(own)));
    return std::unique_ptr<StoredRows>(new SingleRows(std::move(file), rowBytes, plane));
}

Result<ByteView> StoredRows::row(std::uint32_t y) {
    if (y >= blockEnd_) {
        block_.resize(rowBytes_ * blockRows_);
        if (!readBlock(y, block_))
            return file_->failure();
        blockEnd_ = y + blockRows_;
    }
    return ByteView(block_).subspan((y + blockRows_ - blockEnd_) * rowBytes_, rowBytes_);
}

} // namespace kestrine::tiff
