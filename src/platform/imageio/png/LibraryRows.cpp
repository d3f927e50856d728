#include "platform/imageio/png/LibraryRows.h"

#include <algorithm>

namespace kestrine::png {

LibraryRows::LibraryRows(std::unique_ptr<LibraryReader> reader)
    : RowSource(reader->format()), reader_(std::move(reader)), left_(format().height) {}

Result<RowSourcePointer> openLibraryRows(std::shared_ptr<const ByteReader> reader) {
    auto file = std::make_unique<LibraryReader>(std::move(reader));
    TRY(file->readHeader());
    return RowSourcePointer(std::make_unique<LibraryRows>(std::move(file)));
}

Result<void> LibraryRows::readRow(std::span<std::uint8_t> row) {
    TRY(reader_->isInterlaced() ? readInterlacedRow(row) : reader_->readRow(row));
    return --left_ == 0 ? reader_->finish() : Result<void>{};
}

Result<void> LibraryRows::readInterlacedRow(std::span<std::uint8_t> row) {
    if (left_ == format().height) {
        TRY(readPasses());
    }
    const auto from = whole_.row(format().height - left_);
    std::copy(from.begin(), from.end(), row.begin());
    return {};
}

Result<void> LibraryRows::readPasses() {
    whole_ = PixelBuffer(format());
    for (int pass = 0; pass < PNG_INTERLACE_ADAM7_PASSES; ++pass)
        for (std::uint32_t y = 0; y < format().height; ++y)
            TRY(reader_->readRow(whole_.row(y)));
    return {};
}

} // namespace kestrine::png
