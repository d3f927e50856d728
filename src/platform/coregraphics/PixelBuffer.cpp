#include "platform/coregraphics/PixelBuffer.h"

#include <algorithm>

namespace kestrine {

namespace {

class BufferedRows final : public RowSource {
public:
    explicit BufferedRows(std::shared_ptr<const PixelBuffer> pixels)
        : RowSource(pixels->format), pixels_(std::move(pixels)) {}

    Result<void> readRow(std::span<std::uint8_t> row) override {
        std::ranges::copy(pixels_->row(next_++), row.begin());
        return {};
    }

private:
    const std::shared_ptr<const PixelBuffer> pixels_;
    std::size_t next_ = 0;
};

} // namespace

Result<PixelBuffer> readAllRows(RowSource& rows) {
    if (!rows.format().canBeBuffered())
        return Failure{Reason::tooLarge, "the picture is too large to be held in memory"};
    PixelBuffer pixels(rows.format());
    for (std::uint32_t y = 0; y < pixels.format.height; ++y)
        TRY(rows.readRow(pixels.row(y)));
    return pixels;
}

RowSourcePointer rowsOfPixels(std::shared_ptr<const PixelBuffer> pixels) {
    return std::make_unique<BufferedRows>(std::move(pixels));
}

} // namespace kestrine
