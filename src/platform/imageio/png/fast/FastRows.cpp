#include "platform/imageio/png/fast/FastRows.h"

#include "platform/imageio/FallbackRows.h"
#include "platform/imageio/png/LibraryRows.h"
#include "platform/imageio/png/fast/FilteredBands.h"
#include "platform/imageio/png/fast/StoredPixels.h"
#include "platform/imageio/png/fast/WithoutPixels.h"

namespace kestrine::png {

namespace {

class FastRows final : public RowSource {
public:
    FastRows(const InflateFunctions& library, const LibraryReader& file, std::shared_ptr<const ByteReader> reader)
        : RowSource(file.format()), reader_(std::move(reader)), offsetOfPixels_(file.offsetOfPixels()),
          conversion_(file), pixels_(library, reader_, offsetOfPixels_),
          bands_(pixels_, file.storedBytesPerPixel() * format().width, file.storedBytesPerPixel(),
                 format().height) {}

    Result<void> readRow(std::span<std::uint8_t> row) override {
        const std::uint8_t* stored = bands_.next();
        const bool isLast = --rowsLeft_ == 0;
        if (stored == nullptr || (isLast && !pixels_.endsHere()))
            return Failure{Reason::refused, "the fast way of reading PNG: an oddity in the pixels"};
        conversion_.convert(stored, row);
        return isLast ? checkRest() : Result<void>{};
    }

private:
    /// libpng's word on what follows the pixels.
    Result<void> checkRest() const {
        LibraryReader rest(withoutPixels(reader_, offsetOfPixels_, pixels_.endOfChunks()));
        if (Result<void> header = rest.readHeader(); !header)
            return header;
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
    constexpr std::uint64_t mostStoredBytes = 0xFFFF'FFFF; // ISA-L counts them in 32 bits
    return !file.isInterlaced() && (file.deliversAsStored() || file.isIndexedByBytes())
           && file.storedBytes() <= mostStoredBytes;
}

} // namespace

RowSourcePointer openFastRows(const LibraryReader& file, std::shared_ptr<const ByteReader> reader) {
    if (!isUsual(file) || !inflateFunctions())
        return nullptr;
    auto rows = std::make_unique<FastRows>(*inflateFunctions(), file, reader);
    return rowsWithFallback(std::move(rows), [reader] { return openLibraryRows(reader); });
}

} // namespace kestrine::png
