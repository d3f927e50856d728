#include "platform/imageio/png/fast/FastRows.h"

#include "platform/imageio/FallbackRows.h"
#include "platform/imageio/png/LibraryRows.h"
#include "platform/imageio/png/fast/FilteredBands.h"
#include "platform/imageio/png/fast/StoredPixels.h"

#include <algorithm>
#include <array>

namespace kestrine::png {

namespace {

/// An IDAT chunk with the zlib stream of no bytes.
constexpr std::array<std::uint8_t, 20> emptyPixels = {0,    0,    0, 8, 'I', 'D', 'A',  'T',  0x78, 0x9C,
                                                      0x03, 0x00, 0, 0, 0,   1,   0x48, 0x06, 0x89, 0xD2};

/// A PNG file whose IDAT chunks, from `begin` to `end`, are replaced by `emptyPixels`.
class FileWithoutPixels final : public ByteReader {
public:
    FileWithoutPixels(std::shared_ptr<const ByteReader> file, std::uint64_t begin, std::uint64_t end)
        : file_(std::move(file)), begin_(begin), end_(end) {}

    std::uint64_t size() const override {
        return begin_ + emptyPixels.size() + (file_->size() - std::min(end_, file_->size()));
    }

    std::size_t readAt(std::uint64_t offset, std::span<std::uint8_t> into) const override {
        std::size_t done = 0;
        while (done < into.size()) {
            const std::size_t part = readPart(offset + done, into.subspan(done));
            if (part == 0)
                break;
            done += part;
        }
        return done;
    }

private:
    /// Like readAt(), but stops at the beginning and at the end of `emptyPixels`.
    std::size_t readPart(std::uint64_t offset, std::span<std::uint8_t> into) const {
        const std::uint64_t rest = begin_ + emptyPixels.size();
        if (offset >= rest)
            return file_->readAt(end_ + (offset - rest), into);
        if (offset < begin_)
            return file_->readAt(offset, into.first(std::min<std::uint64_t>(into.size(), begin_ - offset)));
        const auto from = std::span(emptyPixels).subspan(offset - begin_);
        const std::size_t count = std::min(into.size(), from.size());
        std::copy_n(from.begin(), count, into.begin());
        return count;
    }

    const std::shared_ptr<const ByteReader> file_;
    const std::uint64_t begin_, end_;
};

class FastRows final : public RowSource {
public:
    FastRows(const InflateFunctions& library, const LibraryReader& file,
             std::shared_ptr<const ByteReader> reader)
        : RowSource(file.format()), reader_(std::move(reader)), offsetOfPixels_(file.offsetOfPixels()),
          conversion_(file), pixels_(library, reader_, offsetOfPixels_),
          bands_(pixels_, file.storedBytesPerPixel() * format().width, file.storedBytesPerPixel(),
                 format().height) {}

    Result<void> readRow(std::span<std::uint8_t> row) override {
        const std::uint8_t* stored = bands_.next();
        const bool isLast = --rowsLeft_ == 0;
        if (stored == nullptr || (isLast && !pixels_.endsHere()))
            return Failure{Reason::refused, "fast PNG decoder: the pixels are damaged or unusual"};
        conversion_.convert(stored, row);
        return isLast ? checkRest() : Result<void>{};
    }

private:
    /// Lets libpng check what follows the pixels.
    Result<void> checkRest() const {
        LibraryReader rest(
            std::make_shared<FileWithoutPixels>(reader_, offsetOfPixels_, pixels_.endOfChunks()));
        TRY(rest.readHeader());
        return rest.finish();
    }

    const std::shared_ptr<const ByteReader> reader_;
    const std::uint64_t offsetOfPixels_;
    const StoredPixels conversion_;
    InflatedPixels pixels_;
    FilteredBands bands_;
    std::uint32_t rowsLeft_ = format().height;
};

bool isUsual(const LibraryReader& file) {
    constexpr std::uint64_t maxStoredBytes = 0xFFFF'FFFF; // ISA-L has 32-bit counters
    return !file.isInterlaced() && (file.deliversAsStored() || file.isIndexedByBytes())
           && file.storedBytes() <= maxStoredBytes;
}

} // namespace

RowSourcePointer openFastRows(const LibraryReader& file, std::shared_ptr<const ByteReader> reader,
                              std::shared_ptr<DamageRecord> damage) {
    if (!isUsual(file) || !inflateFunctions())
        return nullptr;
    auto rows = std::make_unique<FastRows>(*inflateFunctions(), file, reader);
    return rowsWithFallback(std::move(rows), [reader, damage] { return openLibraryRows(reader, damage); });
}

} // namespace kestrine::png
