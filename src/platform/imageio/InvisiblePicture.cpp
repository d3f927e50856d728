#include "platform/imageio/InvisiblePicture.h"

#include "platform/host/Bytes.h"

#include <algorithm>

namespace kestrine {

namespace {

/// The rows of `input`, whose alpha is 0 everywhere, with full alpha.
class OpaqueRows final : public RowSource {
public:
    explicit OpaqueRows(RowSourcePointer input) : RowSource(input->format()), input_(std::move(input)) {}

    Result<void> readRow(std::span<std::uint8_t> row) override {
        TRY(input_->readRow(row));
        const std::size_t pixel = format().bytesPerPixel(), sample = format().bytesPerSample();
        for (std::size_t end = pixel; end <= row.size(); end += pixel)
            std::ranges::fill(row.subspan(end - sample, sample), std::uint8_t{0xFF});
        return {};
    }

private:
    const RowSourcePointer input_;
};

bool hasVisiblePixel(ByteView row, const RowFormat& format) {
    const std::size_t pixel = format.bytesPerPixel(), sample = format.bytesPerSample();
    for (std::size_t end = pixel; end <= row.size(); end += pixel)
        if (row[end - 1] != 0 || row[end - sample] != 0)
            return true;
    return false;
}

} // namespace

Result<bool> isInvisible(const RowOpener& open) {
    const RowSourcePointer rows = TRY(open());
    Bytes row(rows->format().bytesPerRow());
    for (std::uint32_t y = 0; y < rows->format().height; ++y) {
        TRY(rows->readRow(row));
        if (hasVisiblePixel(row, rows->format()))
            return false;
    }
    return true;
}

Result<RowSourcePointer> rowsOpaqueIfInvisible(const RowOpener& open) {
    const bool becomesOpaque = TRY(isInvisible(open));
    RowSourcePointer rows = TRY(open());
    return becomesOpaque ? std::make_unique<OpaqueRows>(std::move(rows)) : std::move(rows);
}

} // namespace kestrine
