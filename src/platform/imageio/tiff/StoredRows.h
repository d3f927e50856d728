// StoredRows: the decompressed rows of one plane, stored in strips or tiles.
#pragma once

#include "platform/imageio/tiff/Page.h"

namespace kestrine::tiff {

/// What decompresses strips and tiles. The results do not differ; a comparison asks for the library alone.
enum class BlockDecoder : std::uint8_t { ownFirst, libraryOnly };

/// Only one thread may use it at a time. Holds a strip, a row of tiles, or one row of a large strip.
class StoredRows {
public:
    /// `file` is at `page`. When the page is planar, each sample has a plane; otherwise there is only plane
    /// 0.
    static std::unique_ptr<StoredRows> create(std::unique_ptr<File> file, const Page& page, unsigned plane,
                                              BlockDecoder decoder = BlockDecoder::ownFirst);
    virtual ~StoredRows() = default;

    /// Row `y`, packed, in the machine's byte order; valid until the next call. Rows must be requested from
    /// top to bottom.
    Result<ByteView> row(std::uint32_t y);

    /// The decoder can start at every multiple of this number without decoding earlier rows. Greater than the
    /// height of any page when the rows depend on each other.
    virtual std::uint32_t independentRows() const { return blockRows_; }

    /// Length of a row; bytes after the last pixel are padding.
    std::size_t rowBytes() const { return rowBytes_; }

protected:
    StoredRows(std::unique_ptr<File> file, std::size_t rowBytes, std::uint32_t blockRows)
        : file_(std::move(file)), rowBytes_(rowBytes), blockRows_(blockRows) {}

    /// Decodes the block that begins at row `y` into `block`, blockRows() rows of rowBytes() each; the last
    /// one may be shorter. False when libtiff fails.
    virtual bool readBlock(std::uint32_t y, Bytes& block) = 0;

    const Functions& library() const { return file_->library(); }
    TIFF* handle() const { return file_->handle(); }
    std::uint32_t blockRows() const { return blockRows_; }

private:
    const std::unique_ptr<File> file_;
    const std::size_t rowBytes_;
    const std::uint32_t blockRows_;
    std::uint32_t blockEnd_ = 0; ///< the row after the block that is held
    Bytes block_;
};

} // namespace kestrine::tiff
