#include "platform/coregraphics/ColumnFilter.h"

#include "platform/coregraphics/kernels/ResampleRows.h"

#include <algorithm>

namespace kestrine {

namespace {

/// Rows that are used over and over, so that nothing is allocated while rows flow.
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

/// One sum for every result row that has begun and not ended.
class ReducingColumns final : public ColumnFilter {
public:
    ReducingColumns(FilterWeights weights, std::size_t samples, std::size_t padding)
        : weights_(std::move(weights)), samples_(samples), pool_(samples + padding),
          row_(samples + padding, 0.0F) {}

    bool needsRow() const override { return nextSource_ < weights_.end(nextResult_); }

    float* rowToFill() override { return row_.data(); }

    void rowAdded() override {
        const std::uint32_t source = nextSource_++;
        beginSums(source);
        targets_.clear();
        factors_.clear();
        for (std::size_t k = 0; k < sums_.size(); ++k) {
            const auto result = static_cast<std::uint32_t>(nextResult_ + k);
            if (source >= weights_.end(result))
                continue;
            targets_.push_back(sums_[k].data());
            factors_.push_back(weights_.weights(result)[source - weights_.first(result)]);
        }
        kernels::addWeightedRow(targets_, factors_, row_.data(), samples_);
    }

    const FloatRow& nextRow() override {
        if (!finished_.empty())
            pool_.giveBack(std::move(finished_));
        finished_ = std::move(sums_.front());
        sums_.pop_front();
        ++nextResult_;
        return finished_;
    }

private:
    void beginSums(std::uint32_t source) {
        while (nextResult_ + sums_.size() < weights_.outSize()
               && weights_.first(static_cast<std::uint32_t>(nextResult_ + sums_.size())) <= source) {
            sums_.push_back(pool_.take());
            std::ranges::fill(sums_.back(), 0.0F);
        }
    }

    const FilterWeights weights_;
    const std::size_t samples_;
    RowPool pool_;
    FloatRow row_;
    FloatRow finished_;
    std::deque<FloatRow> sums_; ///< of the results from nextResult_ on
    std::vector<float*> targets_;
    std::vector<float> factors_;
    std::uint32_t nextSource_ = 0;
    std::uint32_t nextResult_ = 0;
};

/// The source rows that the next result still needs.
class EnlargingColumns final : public ColumnFilter {
public:
    EnlargingColumns(FilterWeights weights, std::size_t samples, std::size_t padding)
        : weights_(std::move(weights)), samples_(samples), pool_(samples + padding),
          result_(samples + padding, 0.0F), incoming_(pool_.take()) {}

    bool needsRow() const override { return nextSource_ < weights_.end(nextResult_); }

    float* rowToFill() override { return incoming_.data(); }

    void rowAdded() override {
        rows_.push_back(std::move(incoming_));
        ++nextSource_;
        while (nextSource_ - rows_.size() < weights_.first(nextResult_) && !rows_.empty())
            dropOldest();
        incoming_ = pool_.take();
    }

    const FloatRow& nextRow() override {
        while (nextSource_ - rows_.size() < weights_.first(nextResult_))
            dropOldest();
        std::fill_n(result_.begin(), samples_, 0.0F);
        float* const target = result_.data();
        const std::span<const float> factors = weights_.weights(nextResult_);
        for (std::size_t t = 0; t < factors.size(); ++t)
            kernels::addWeightedRow({&target, 1}, factors.subspan(t, 1), rows_[t].data(), samples_);
        ++nextResult_;
        return result_;
    }

private:
    void dropOldest() {
        pool_.giveBack(std::move(rows_.front()));
        rows_.pop_front();
    }

    const FilterWeights weights_;
    const std::size_t samples_;
    RowPool pool_;
    FloatRow result_;
    FloatRow incoming_;
    std::deque<FloatRow> rows_; ///< the source rows up to nextSource_
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
