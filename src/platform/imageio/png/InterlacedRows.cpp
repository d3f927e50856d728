#include "platform/imageio/png/InterlacedRows.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace kestrine::png {

namespace {

/// Copies adjacent pixels of `size` bytes to places `step` pixels apart.
template <std::size_t size>
void spreadPixels(const std::uint8_t* from, std::uint8_t* to, std::size_t step, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i)
        std::memcpy(to + i * step * size, from + i * size, size);
}

/// The functions by the size of a pixel, beginning with 1 byte. PNG pixels have 1, 2, 3, 4, 6 or 8 bytes.
constexpr std::array pixelSpreads = {spreadPixels<1>, spreadPixels<2>, spreadPixels<3>, spreadPixels<4>,
                                     spreadPixels<5>, spreadPixels<6>, spreadPixels<7>, spreadPixels<8>};

} // namespace

InterlacedRows::InterlacedRows(Reader first, std::shared_ptr<const ByteReader> file,
                               std::uint64_t maxHeldBytes)
    : RowSource(first->format()), file_(std::move(file)), isHeld_(format().bytes() <= maxHeldBytes),
      spare_(std::move(first)), part_(format().bytesPerRow()) {}

Result<void> InterlacedRows::readRow(std::span<std::uint8_t> row) {
    TRY(isHeld_ ? readFromHeldRows(row) : readFromAllPasses(row));
    if (++y_ < format().height)
        return {};
    std::size_t last = readers_.size() - 1;
    while (readers_[last] == nullptr)
        --last;
    return readers_[last]->finish();
}

bool InterlacedRows::isEmpty(int pass) const {
    return PNG_PASS_ROWS(format().height, pass) == 0 || PNG_PASS_COLS(format().width, pass) == 0;
}

Result<void> InterlacedRows::readFromHeldRows(std::span<std::uint8_t> row) {
    if (y_ == 0)
        TRY(readEvenRows());
    if (y_ % 2 != 0)
        return readPart(*readers_.back(), PNG_INTERLACE_ADAM7_PASSES - 1, row);
    std::ranges::copy(evenRows_.row(y_ / 2), row.begin());
    return {};
}

Result<void> InterlacedRows::readEvenRows() {
    RowFormat even = format();
    even.height = (even.height + 1) / 2;
    evenRows_ = PixelBuffer(even);
    readers_.back() = std::move(spare_);
    for (int pass = 0; pass + 1 < PNG_INTERLACE_ADAM7_PASSES; ++pass)
        for (std::uint32_t i = 0; !isEmpty(pass) && i < PNG_PASS_ROWS(format().height, pass); ++i)
            TRY(readPart(*readers_.back(), pass, evenRows_.row(PNG_ROW_FROM_PASS_ROW(i, pass) / 2)));
    return {};
}

Result<void> InterlacedRows::readFromAllPasses(std::span<std::uint8_t> row) {
    for (int pass = 0; pass < PNG_INTERLACE_ADAM7_PASSES; ++pass) {
        if (isEmpty(pass) || !PNG_ROW_IN_INTERLACE_PASS(y_, pass))
            continue;
        const Reader& reader = readers_[static_cast<std::size_t>(pass)];
        if (reader == nullptr)
            TRY(start(pass));
        TRY(readPart(*reader, pass, row));
    }
    return {};
}

Result<void> InterlacedRows::start(int pass) {
    Reader reader = std::move(spare_);
    if (reader == nullptr) {
        reader = std::make_unique<LibraryReader>(file_);
        TRY(reader->readHeader());
        if (reader->format() != format() || !reader->isInterlaced())
            return Failure{Reason::malformed, "the PNG picture changed while it was read"};
    }
    for (int earlier = 0; earlier < pass; ++earlier)
        for (std::uint32_t i = 0; !isEmpty(earlier) && i < PNG_PASS_ROWS(format().height, earlier); ++i)
            TRY(reader->readRow(part_));
    readers_[static_cast<std::size_t>(pass)] = std::move(reader);
    return {};
}

Result<void> InterlacedRows::readPart(LibraryReader& reader, int pass, std::span<std::uint8_t> row) {
    TRY(reader.readRow(part_));
    const std::size_t size = format().bytesPerPixel();
    pixelSpreads[size - 1](part_.data(), row.data() + PNG_PASS_START_COL(pass) * size,
                           std::size_t{1} << PNG_PASS_COL_SHIFT(pass), PNG_PASS_COLS(format().width, pass));
    return {};
}

} // namespace kestrine::png
