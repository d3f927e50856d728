#include "platform/imageio/FallbackRows.h"

namespace kestrine {

namespace {

class FallbackRows final : public RowSource {
public:
    FallbackRows(RowSourcePointer first, RowOpener openSecond)
        : RowSource(first->format()), first_(std::move(first)), openSecond_(std::move(openSecond)) {}

    Result<void> readRow(std::span<std::uint8_t> row) override {
        if (first_ != nullptr) {
            if (first_->readRow(row)) {
                ++delivered_;
                return {};
            }
            first_.reset();
            if (Result<void> replaced = openSecond(row); !replaced)
                return replaced;
        }
        return second_->readRow(row);
    }

private:
    /// Starts the second decoder and skips the delivered rows. `row` is overwritten.
    Result<void> openSecond(std::span<std::uint8_t> row) {
        RowSourcePointer opened = TRY(openSecond_());
        second_ = std::move(opened);
        if (second_->format() != format())
            return Failure{Reason::malformed, "the decoders disagree about the size"};
        for (std::uint32_t i = 0; i < delivered_; ++i) {
            if (Result<void> skipped = second_->readRow(row); !skipped)
                return skipped;
        }
        return {};
    }

    RowSourcePointer first_;
    const RowOpener openSecond_;
    RowSourcePointer second_;
    std::uint32_t delivered_ = 0;
};

} // namespace

RowSourcePointer rowsWithFallback(RowSourcePointer first, RowOpener openSecond) {
    return std::make_unique<FallbackRows>(std::move(first), std::move(openSecond));
}

} // namespace kestrine
