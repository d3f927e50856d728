#include "platform/imageio/WholePicture.h"

#include <algorithm>

namespace kestrine {

namespace {

class WholePictureRows final : public RowSource {
public:
    WholePictureRows(const RowFormat& format, std::function<Result<PixelBuffer>()> decode)
        : RowSource(format), decode_(std::move(decode)) {}

    Result<void> readRow(std::span<std::uint8_t> row) override {
        if (next_ == 0)
            pixels_ = TRY(decode_());
        std::ranges::copy(pixels_.row(next_++), row.begin());
        return {};
    }

private:
    const std::function<Result<PixelBuffer>()> decode_;
    PixelBuffer pixels_;
    std::size_t next_ = 0;
};

} // namespace

RowSourcePointer rowsOfWholePicture(const RowFormat& format, std::function<Result<PixelBuffer>()> decode) {
    return std::make_unique<WholePictureRows>(format, std::move(decode));
}

} // namespace kestrine
