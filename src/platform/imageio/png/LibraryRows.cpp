#include "platform/imageio/png/LibraryRows.h"

namespace kestrine::png {

LibraryRows::LibraryRows(std::unique_ptr<LibraryReader> reader)
    : RowSource(reader->format()), reader_(std::move(reader)), left_(format().height) {}

Result<RowSourcePointer> openLibraryRows(std::shared_ptr<const ByteReader> reader) {
    auto file = std::make_unique<LibraryReader>(std::move(reader));
    TRY(file->readHeader());
    return RowSourcePointer(std::make_unique<LibraryRows>(std::move(file)));
}

Result<void> LibraryRows::readRow(std::span<std::uint8_t> row) {
    TRY(reader_->readRow(row));
    return --left_ == 0 ? reader_->finish() : Result<void>{};
}

} // namespace kestrine::png
