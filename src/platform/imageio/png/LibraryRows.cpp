#include "platform/imageio/png/LibraryRows.h"

#include <algorithm>

namespace kestrine::png {

LibraryRows::LibraryRows(std::unique_ptr<LibraryReader> reader, std::shared_ptr<DamageRecord> damage)
    : RowSource(reader->format()), reader_(std::move(reader)), damage_(std::move(damage)) {}

Result<RowSourcePointer> openLibraryRows(std::shared_ptr<const ByteReader> reader,
                                         std::shared_ptr<DamageRecord> damage) {
    auto file = std::make_unique<LibraryReader>(std::move(reader));
    TRY(file->readHeader());
    return RowSourcePointer(std::make_unique<LibraryRows>(std::move(file), std::move(damage)));
}

Result<void> LibraryRows::readRow(std::span<std::uint8_t> row) {
    Result<void> read = isDamaged_ ? Result<void>() : reader_->readRow(row);
    if (!read && y_ == 0)
        return read;
    isDamaged_ = isDamaged_ || !read;
    if (isDamaged_)
        std::ranges::fill(row, std::uint8_t{0});
    if (++y_ == format().height && !isDamaged_)
        read = reader_->finish();
    if (!read)
        damage_->note(read.failure());
    return {};
}

} // namespace kestrine::png
