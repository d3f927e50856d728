#include "platform/coregraphics/ColumnFilter.h"

#include "platform/coregraphics/kernels/ResampleRows.h"

#include <algorithm>
#include <array>

namespace kestrine {

namespace {

/// Reuses rows, so that no memory is allocated for each row.
class RowPool {
public:
    explicit RowPool(std::size_t size) : size_(size) {}

    FloatRow take() {
        if (free_.empty())
            return FloatRow(size_, 0.0F);
        FloatRow row = std::move(free_.back());
        free_.pop_back();
        return row;
    }
    void giveBack(FloatRow row) { free_.push_back(std::move(row)); }

private:
    std::size_t size_;
    std::vector<FloatRow> free_;
};

/// Keeps one sum for every result row that has begun and is not complete. Source rows are added several at a
/// time because reading and writing the sums takes most of the time.
class ReducingColumns final : public ColumnFilter {
public:
    ReducingColumns(FilterWeights weights, std::size_t samples, std::size_t padding)
        : weights_(std::move(weights)), samples_(samples), pool_(samples + padding) {
        for (FloatRow& row : waiting_)
            row.resize(samples, 0.0F);
    }

    bool needsRow() const override { return nextSource_ < weights_.end(nextResult_); }

    float* rowToFill() override { return waiting_[waitingCount_].data(); }

    void rowAdded() override {
        ++nextSource_;
        if (++waitingCount_ == waiting_.size())
            addWaitingRows();
    }

    FloatRow takeRow() override {
        if (waitingCount_ > 0)
            addWaitingRows();
        FloatRow row = std::move(sums_.front());
        sums_.pop_front();
        ++nextResult_;
        return row;
    }

    void giveBack(FloatRow row) override { pool_.giveBack(std::move(row)); }

private:
    void addWaitingRows() {
        const auto count = static_cast<std::uint32_t>(waitingCount_);
        const std::uint32_t first = nextSource_ - count;
        beginSums();
        targets_.clear();
        factors_.clear();
        for (std::size_t k = 0; k < sums_.size(); ++k) {
            const auto result = static_cast<std::uint32_t>(nextResult_ + k);
            if (first >= weights_.end(result))
                continue;
            targets_.push_back(sums_[k].data());
            for (std::uint32_t source = first; source < nextSource_; ++source)
                factors_.push_back(weights_.weightOf(source, result));
        }
        std::array<const float*, kernels::maxRowsAdded> rows{};
        std::ranges::transform(waiting_, rows.begin(), [](const FloatRow& row) { return row.data(); });
        kernels::addWeightedRows(targets_, factors_.data(), std::span(rows).first(count), samples_);
        waitingCount_ = 0;
    }

    /// Begins the sums of all results that use a source row up to nextSource_.
    void beginSums() {
        while (nextResult_ + sums_.size() < weights_.outSize()
               && weights_.first(static_cast<std::uint32_t>(nextResult_ + sums_.size())) < nextSource_) {
            sums_.push_back(pool_.take());
            std::ranges::fill(sums_.back(), 0.0F);
        }
    }

    const FilterWeights weights_;
    const std::size_t samples_;
    RowPool pool_;
    std::array<FloatRow, kernels::maxRowsAdded> waiting_; ///< the last source rows, not yet added
    std::size_t waitingCount_ = 0;
    std::deque<FloatRow> sums_; ///< of results from nextResult_ on
    std::vector<float*> targets_;
    std::vector<float> factors_;
    std::uint32_t nextSource_ = 0;
    std::uint32_t nextResult_ = 0;
};

/// Keeps the source rows that the next result needs.
class EnlargingColumns final : public ColumnFilter {
public:
    EnlargingColumns(FilterWeights weights, std::size_t samples, std::size_t padding)
        : weights_(std::move(weights)), samples_(samples), pool_(samples + padding), incoming_(pool_.take()) {
    }

    bool needsRow() const override { return nextSource_ < weights_.end(nextResult_); }

    float* rowToFill() override { return incoming_.data(); }

    void rowAdded() override {
        rows_.push_back(std::move(incoming_));
        ++nextSource_;
        while (nextSource_ - rows_.size() < weights_.first(nextResult_) && !rows_.empty())
            dropOldest();
        incoming_ = pool_.take();
    }

    FloatRow takeRow() override {
        while (nextSource_ - rows_.size() < weights_.first(nextResult_))
            dropOldest();
        FloatRow result = pool_.take();
        std::ranges::fill(result, 0.0F);
        float* const target = result.data();
        const std::span<const float> factors = weights_.weights(nextResult_);
        for (std::size_t t = 0; t < factors.size(); t += kernels::maxRowsAdded) {
            const std::size_t count = std::min(kernels::maxRowsAdded, factors.size() - t);
            std::array<const float*, kernels::maxRowsAdded> rows{};
            for (std::size_t r = 0; r < count; ++r)
                rows[r] = rows_[t + r].data();
            kernels::addWeightedRows({&target, 1}, &factors[t], std::span(rows).first(count), samples_);
        }
        ++nextResult_;
        return result;
    }

    void giveBack(FloatRow row) override { pool_.giveBack(std::move(row)); }

private:
    void dropOldest() {
        pool_.giveBack(std::move(rows_.front()));
        rows_.pop_front();
    }

    const FilterWeights weights_;
    const std::size_t samples_;
    RowPool pool_;
    FloatRow incoming_;
    std::deque<FloatRow> rows_; ///< source rows up to nextSource_
    std::uint32_t nextSource_ = 0;
    std::uint32_t nextResult_ = 0;
};

} // namespace

std::unique_ptr<ColumnFilter> ColumnFilter::create(FilterWeights weights, std::size_t samples,
                                                   std::size_t padding) {
    const std::uint32_t results = weights.outSize();
    const bool enlarges = results > weights.end(results - 1) - weights.first(0);
    if (enlarges)
        return std::make_unique<EnlargingColumns>(std::move(weights), samples, padding);
    return std::make_unique<ReducingColumns>(std::move(weights), samples, padding);
}

} // namespace kestrine
