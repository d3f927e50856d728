// Reads PCX files row by row, and the first page of DCX files.

#include "platform/host/LittleEndian.h"
#include "platform/imageio/Codecs.h"
#include "platform/imageio/PartReader.h"
#include "platform/imageio/pcx/StoredRows.h"

#include <algorithm>

namespace kestrine::pcx {

namespace {

class Rows final : public RowSource {
public:
    Rows(std::shared_ptr<const ByteReader> reader, std::shared_ptr<const Header> header)
        : RowSource(header->format), stored_(std::move(reader), header->isRunLength),
          header_(std::move(header)), bytes_(header_->bytesPerStoredRow()) {}

    Result<void> readRow(std::span<std::uint8_t> row) override {
        TRY(stored_.read(bytes_));
        switch (header_->pixels) {
        case Pixels::bits:
            for (std::size_t x = 0; x < row.size(); ++x)
                row[x] = indexAt(x) == 0 ? 0 : 255;
            break;
        case Pixels::gray:
            std::copy_n(bytes_.begin(), row.size(), row.begin());
            break;
        case Pixels::indexed:
            for (std::size_t x = 0; x < format().width; ++x)
                std::copy_n(header_->palette.begin() + static_cast<std::ptrdiff_t>(3 * indexAt(x)), 3,
                            row.begin() + static_cast<std::ptrdiff_t>(3 * x));
            break;
        case Pixels::colors:
            for (std::size_t i = 0; i < row.size(); ++i)
                row[i] = bytes_[i % format().channels() * header_->planeBytes + i / format().channels()];
            break;
        }
        return {};
    }

private:
    /// The first plane holds the lowest bits.
    std::size_t indexAt(std::size_t x) const {
        const unsigned bits = header_->bits;
        const std::size_t place = x * bits / 8, shift = 8 - bits - x * bits % 8;
        std::size_t index = 0;
        for (std::uint32_t plane = 0; plane < header_->planes; ++plane)
            index |= (bytes_[plane * header_->planeBytes + place] >> shift & ((1u << bits) - 1))
                     << plane * bits;
        return index;
    }

    StoredRows stored_;
    const std::shared_ptr<const Header> header_;
    Bytes bytes_;
};

class Decoder final : public ImageDecoder {
public:
    /// The file has `pages` of which `reader` shows the first.
    Decoder(std::shared_ptr<const ByteReader> reader, Header header, std::uint32_t pages)
        : reader_(std::move(reader)), header_(std::make_shared<const Header>(std::move(header))),
          pages_(pages) {
        frames_.push_back({.format = header_->format,
                           .isUncompressed = !header_->isRunLength,
                           .storedBitsPerPixel = header_->bits * header_->planes});
    }

    Result<RowSourcePointer> rows(std::size_t, int) const override {
        return RowSourcePointer(std::make_unique<Rows>(reader_, header_));
    }

    FileContents contents() const override {
        return pages_ == 1 ? FileContents{} : FileContents{FileContents::Kind::pages, pages_};
    }

    Result<Bytes> colorTable() const override {
        return header_->pixels == Pixels::indexed ? header_->palette : Bytes{};
    }

private:
    const std::shared_ptr<const ByteReader> reader_;
    const std::shared_ptr<const Header> header_;
    const std::uint32_t pages_;
};

/// DCX: a list of offsets of PCX files, ended by 0.
bool isList(ByteView head) {
    constexpr std::uint32_t signature = 987654321;
    return head.size() >= 4 && littleEndian(head.first(4)) == signature;
}

/// The offsets of the pages.
std::vector<std::uint64_t> pagesIn(const ByteReader& reader) {
    constexpr std::size_t maximumPages = 1024, offsetLength = 4;
    Bytes list(maximumPages * offsetLength);
    list.resize(reader.readAt(offsetLength, list));
    std::vector<std::uint64_t> pages;
    for (std::size_t at = 0; at + offsetLength <= list.size(); at += offsetLength) {
        const std::uint64_t offset = littleEndian(ByteView(list).subspan(at, offsetLength));
        if (offset == 0)
            break;
        pages.push_back(offset);
    }
    return pages;
}

/// The first page. It ends where the next one in the file begins.
std::shared_ptr<const ByteReader> firstPage(std::shared_ptr<const ByteReader> reader,
                                            const std::vector<std::uint64_t>& pages) {
    const std::uint64_t begin = pages.front();
    std::uint64_t length = reader->size();
    for (const std::uint64_t other : pages)
        if (other > begin)
            length = std::min(length, other - begin);
    return readerOfPart(std::move(reader), begin, length);
}

bool recognises(ByteView head) { return isPCX(head) || isList(head); }

Result<std::unique_ptr<ImageDecoder>> open(std::shared_ptr<const ByteReader> reader) {
    std::array<std::uint8_t, 12> head{};
    reader->readAt(0, head);
    std::uint32_t pages = 1;
    if (isList(head)) {
        const std::vector<std::uint64_t> offsets = pagesIn(*reader);
        if (offsets.empty())
            return Failure{Reason::empty, "the DCX file has no pages"};
        pages = static_cast<std::uint32_t>(offsets.size());
        reader = firstPage(std::move(reader), offsets);
        if (!isPCX(ByteView(head).first(reader->readAt(0, head))))
            return Failure{Reason::malformed, "the first page of the DCX file is not a PCX file"};
    }
    Header header = TRY(readHeader(reader));
    return std::unique_ptr<ImageDecoder>(
        std::make_unique<Decoder>(std::move(reader), std::move(header), pages));
}

} // namespace

const ImageCodec codec = {"PCX", recognises, open};

} // namespace kestrine::pcx
