#include "platform/coregraphics/FilteredRows.h"

#include "platform/coregraphics/RowsAhead.h"
#include "platform/coregraphics/SlotRing.h"
#include "platform/coregraphics/kernels/ResampleRows.h"

#include <algorithm>

namespace kestrine {

namespace {

/// The rows of one call of next(). They stay here until the batch is filled again.
using Batch = std::vector<FloatRow>;

class Filtering {
public:
    Filtering(RowSourcePointer input, const SampleConversion& conversion, FilterWeights weights)
        : input_(std::move(input)), conversion_(conversion), rowsLeft_(weights.outSize()),
          columns_(ColumnFilter::create(std::move(weights), input_->format().samplesPerRow(),
                                        kernels::rowPadding)),
          samples_(input_->format().bytesPerRow()) {}

    std::size_t rowsLeft() const { return rowsLeft_; }

    Result<void> fill(Batch& batch) {
        for (FloatRow& row : batch)
            columns_->giveBack(std::move(row));
        batch.clear();
        for (std::size_t wanted = std::min(kernels::maxRowsWeighed, rowsLeft_); wanted > 0; --wanted) {
            TRY(readColumns());
            batch.push_back(columns_->takeRow());
        }
        rowsLeft_ -= batch.size();
        return {};
    }

private:
    /// Reads the rows that the next result of columns_ needs.
    Result<void> readColumns() {
        while (columns_->needsRow()) {
            TRY(input_->readRow(samples_));
            conversion_.toFloats(samples_.data(), columns_->rowToFill());
            columns_->rowAdded();
        }
        return {};
    }

    const RowSourcePointer input_;
    const SampleConversion& conversion_;
    std::size_t rowsLeft_;
    const std::unique_ptr<ColumnFilter> columns_;
    Bytes samples_;
};

class FilteredHere final : public FilteredRows {
public:
    explicit FilteredHere(std::unique_ptr<Filtering> filtering) : filtering_(std::move(filtering)) {}

    Result<std::span<const FloatRow>> next() override {
        TRY(filtering_->fill(batch_));
        return std::span<const FloatRow>(batch_);
    }

private:
    const std::unique_ptr<Filtering> filtering_;
    Batch batch_;
};

class FilteredAhead final : public FilteredRows {
public:
    FilteredAhead(std::shared_ptr<Crew> crew, std::unique_ptr<Filtering> filtering)
        : filtering_(std::move(filtering)), slots_(std::move(crew)) {
        slots_.start([this](Slot& slot) { return fill(slot); });
    }

    Result<std::span<const FloatRow>> next() override {
        const Slot& slot = slots_.next();
        if (slot.interruption)
            return slot.interruption.passOn();
        return std::span<const FloatRow>(slot.batch);
    }

private:
    struct Slot {
        Batch batch;
        Interruption interruption; ///< instead of the batch
    };

    bool fill(Slot& slot) {
        slot.interruption.during([&] { return filtering_->fill(slot.batch); });
        return !slot.interruption && filtering_->rowsLeft() > 0;
    }

    const std::unique_ptr<Filtering> filtering_; ///< used by the thread that fills
    SlotRing<Slot, 3> slots_;                    ///< one being filled, one in use, and one in between
};

} // namespace

std::unique_ptr<FilteredRows> FilteredRows::create(RowSourcePointer input, const SampleConversion& conversion,
                                                   FilterWeights weights) {
    std::shared_ptr<Crew> crew = crewFor(input->format());
    // Two threads have enough to do then, and each further step that is handed over costs time.
    const bool hasEnoughSteps = crew != nullptr && crew->threads() == 2 && input->isReadAhead();
    auto filtering = std::make_unique<Filtering>(std::move(input), conversion, std::move(weights));
    if (crew == nullptr || hasEnoughSteps)
        return std::make_unique<FilteredHere>(std::move(filtering));
    return std::make_unique<FilteredAhead>(std::move(crew), std::move(filtering));
}

} // namespace kestrine
