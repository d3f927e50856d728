#include "platform/imageio/png/FastRows.h"

#include "platform/imageio/PNGRows.h"
#include "platform/imageio/png/FilteredBands.h"
#include "platform/imageio/png/StoredPixels.h"
#include "platform/imageio/png/WithoutPixels.h"

namespace kestrine {

namespace {

class FastRows final : public RowSource {
public:
    FastRows(const InflateFunctions& library, const PNGReader& file, std::shared_ptr<const ByteReader> reader)
        : RowSource(file.format()), reader_(std::move(reader)), offsetOfPixels_(file.offsetOfPixels()),
          conversion_(file), pixels_(library, reader_, offsetOfPixels_),
          bands_(pixels_, file.storedBytesPerPixel() * format().width, file.storedBytesPerPixel(),
                 format().height) {}

    Result<void> readRow(std::span<std::uint8_t> row) override {
        if (general_)
            return general_->readRow(row);
        const std::uint8_t* stored = bands_.next();
        const bool isLast = delivered_ + 1 == format().height;
        if (stored == nullptr || (isLast && !pixels_.endsHere()))
            return readTheGeneralWay(row);
        conversion_.convert(stored, row);
        ++delivered_;
        return isLast ? checkRest() : Result<void>{};
    }

private:
    /// libpng's word on what follows the pixels.
    Result<void> checkRest() const {
        PNGReader rest(withoutPixels(reader_, offsetOfPixels_, pixels_.endOfChunks()));
        if (Result<void> header = rest.readHeader(); !header)
            return header;
        return rest.finish();
    }

    /// Starts again with libpng, and goes on with it.
    Result<void> readTheGeneralWay(std::span<std::uint8_t> row) {
        auto file = std::make_unique<PNGReader>(reader_);
        if (Result<void> header = file->readHeader(); !header)
            return header;
        if (!(file->format() == format()))
            return Failure{Reason::malformed, "the PNG picture changed while it was read"};
        general_ = std::make_unique<PNGRows>(std::move(file));
        for (; delivered_ > 0; --delivered_)
            if (Result<void> read = general_->readRow(row); !read)
                return read;
        return general_->readRow(row);
    }

    const std::shared_ptr<const ByteReader> reader_;
    const std::uint64_t offsetOfPixels_;
    const StoredPixels conversion_;
    InflatedPixels pixels_;
    FilteredBands bands_;
    std::uint32_t delivered_ = 0;
    RowSourcePointer general_; ///< once something odd was met
};

bool isUsual(const PNGReader& file) {
    constexpr std::uint64_t mostStoredBytes = 0xFFFF'FFFF; // ISA-L counts them in 32 bits
    return !file.isInterlaced() && (file.deliversAsStored() || file.isIndexedByBytes())
           && file.storedBytes() <= mostStoredBytes;
}

} // namespace

RowSourcePointer fastPNGRows(const PNGReader& file, std::shared_ptr<const ByteReader> reader) {
    if (!isUsual(file) || !inflateFunctions())
        return nullptr;
    return std::make_unique<FastRows>(*inflateFunctions(), file, std::move(reader));
}

} // namespace kestrine
