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
            index |= (bytes_[plane * header_->planeBytes + place] >> shift & ((1u << bits) - 1)) << plane * bits;
        return index;
    }

    StoredRows stored_;
    const std::shared_ptr<const Header> header_;
    Bytes bytes_;
};

class Decoder final : public ImageDecoder {
public:
    Decoder(std::shared_ptr<const ByteReader> reader, Header header)
        : reader_(std::move(reader)), header_(std::make_shared<const Header>(std::move(header))) {
        frames_.push_back({.format = header_->format,
                           .isUncompressed = !header_->isRunLength,
                           .storedBitsPerPixel = header_->bits * header_->planes});
    }

    Result<RowSourcePointer> rows(std::size_t, int) const override {
        return RowSourcePointer(std::make_unique<Rows>(reader_, header_));
    }

    Result<Bytes> colorTable() const override {
        return header_->pixels == Pixels::indexed ? header_->palette : Bytes{};
    }

private:
    const std::shared_ptr<const ByteReader> reader_;
    const std::shared_ptr<const Header> header_;
};

/// DCX: a list of offsets of PCX files, ended by 0.
bool isList(ByteView head) {
    constexpr std::uint32_t signature = 987654321;
    return head.size() >= 4 && littleEndian(head.first(4)) == signature;
}

/// The first page of a list. It ends where the next one in the file begins.
std::shared_ptr<const ByteReader> firstPage(std::shared_ptr<const ByteReader> reader) {
    constexpr std::size_t maximumPages = 1024, offsetLength = 4;
    Bytes list(maximumPages * offsetLength);
    list.resize(reader->readAt(offsetLength, list));
    std::uint64_t begin = 0, end = reader->size();
    for (std::size_t at = 0; at + offsetLength <= list.size(); at += offsetLength) {
        const std::uint64_t offset = littleEndian(ByteView(list).subspan(at, offsetLength));
        if (offset == 0)
            break;
        if (at == 0)
            begin = offset;
        else if (offset > begin)
            end = std::min(end, offset);
    }
    return readerOfPart(std::move(reader), begin, end - std::min(begin, end));
}

bool recognises(ByteView head) { return isPCX(head) || isList(head); }

Result<std::unique_ptr<ImageDecoder>> open(std::shared_ptr<const ByteReader> reader) {
    std::array<std::uint8_t, 12> head{};
    reader->readAt(0, head);
    if (isList(head)) {
        reader = firstPage(std::move(reader));
        reader->readAt(0, head);
        if (!isPCX(head))
            return Failure{Reason::malformed, "the first page of the DCX file is not a PCX file"};
    }
    Header header = TRY(readHeader(reader));
    return std::unique_ptr<ImageDecoder>(std::make_unique<Decoder>(std::move(reader), std::move(header)));
}

} // namespace

const ImageCodec codec = {"PCX", recognises, open};

} // namespace kestrine::pcx
