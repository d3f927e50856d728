#include "platform/coregraphics/WatchedRows.h"

namespace kestrine {

namespace {

thread_local RowWatch* newestWatch = nullptr;

} // namespace

class WatchedRows final : public RowSource {
public:
    WatchedRows(RowSourcePointer input, RowWatch& watch)
        : RowSource(input->format()), input_(std::move(input)), watch_(watch) {}

    Result<void> readRow(std::span<std::uint8_t> row) override {
        TRY(input_->readRow(row));
        const std::uint64_t before = hundredths();
        ++done_;
        if (hundredths() == before || watch_.report(static_cast<double>(done_) / format().height))
            return {};
        watch_.wasEnded_ = true;
        return Failure{Reason::refused, "the conversion was cancelled"};
    }

    bool isReadAhead() const override { return input_->isReadAhead(); }

private:
    std::uint64_t hundredths() const { return done_ * 100 / format().height; }

    const RowSourcePointer input_;
    RowWatch& watch_;
    std::uint64_t done_ = 0; ///< rows
};

RowWatch::RowWatch(Report report) : report_(std::move(report)), outer_(newestWatch) { newestWatch = this; }

RowWatch::~RowWatch() { newestWatch = outer_; }

RowSourcePointer rowsWatched(RowSourcePointer input) {
    return newestWatch == nullptr ? std::move(input)
                                  : std::make_unique<WatchedRows>(std::move(input), *newestWatch);
}

} // namespace kestrine
