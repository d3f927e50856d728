#include "platform/imageio/png/InterlacedRows.h"

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

/// By the size of a pixel, beginning with 1 byte. PNG pixels have 1, 2, 3, 4, 6 or 8 bytes.
constexpr std::array pixelSpreads = {spreadPixels<1>, spreadPixels<2>, spreadPixels<3>, spreadPixels<4>,
                                     spreadPixels<5>, spreadPixels<6>, spreadPixels<7>, spreadPixels<8>};

} // namespace

InterlacedRows::InterlacedRows(std::unique_ptr<LibraryReader> first, std::shared_ptr<const ByteReader> file)
    : RowSource(first->format()), file_(std::move(file)), spare_(std::move(first)),
      part_(format().bytesPerRow()) {}

Result<void> InterlacedRows::readRow(std::span<std::uint8_t> row) {
    int lastPass = 0;
    for (int pass = 0; pass < PNG_INTERLACE_ADAM7_PASSES; ++pass) {
        if (isEmpty(pass))
            continue;
        lastPass = pass;
        if (PNG_ROW_IN_INTERLACE_PASS(y_, pass))
            TRY(readPart(pass, row));
    }
    // The last row of the last pass may stand before that of the picture.
    return ++y_ == format().height ? readers_[static_cast<std::size_t>(lastPass)]->finish() : Result<void>{};
}

bool InterlacedRows::isEmpty(int pass) const {
    return PNG_PASS_ROWS(format().height, pass) == 0 || PNG_PASS_COLS(format().width, pass) == 0;
}

std::uint64_t InterlacedRows::rowsBefore(int pass) const {
    std::uint64_t rows = 0;
    for (int earlier = 0; earlier < pass; ++earlier)
        rows += isEmpty(earlier) ? 0 : PNG_PASS_ROWS(format().height, earlier);
    return rows;
}

Result<void> InterlacedRows::start(int pass) {
    std::unique_ptr<LibraryReader> reader = std::move(spare_);
    if (reader == nullptr) {
        reader = std::make_unique<LibraryReader>(file_);
        TRY(reader->readHeader());
        if (reader->format() != format() || !reader->isInterlaced())
            return Failure{Reason::malformed, "the PNG picture changed while it was read"};
    }
    for (std::uint64_t i = rowsBefore(pass); i > 0; --i)
        TRY(reader->readRow(part_));
    readers_[static_cast<std::size_t>(pass)] = std::move(reader);
    return {};
}

Result<void> InterlacedRows::readPart(int pass, std::span<std::uint8_t> row) {
    const std::unique_ptr<LibraryReader>& reader = readers_[static_cast<std::size_t>(pass)];
    if (reader == nullptr)
        TRY(start(pass));
    TRY(reader->readRow(part_));
    const std::size_t size = format().bytesPerPixel();
    pixelSpreads[size - 1](part_.data(), row.data() + PNG_PASS_START_COL(pass) * size,
                           std::size_t{1} << PNG_PASS_COL_SHIFT(pass), PNG_PASS_COLS(format().width, pass));
    return {};
}

} // namespace kestrine::png
