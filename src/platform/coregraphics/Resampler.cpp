#include "platform/coregraphics/Resampler.h"

#include "platform/coregraphics/ColumnFilter.h"
#include "platform/coregraphics/kernels/ResampleRows.h"

#include <algorithm>
#include <array>
#include <vector>

namespace kestrine {

namespace {

RowFormat resampledFormat(RowFormat format, const Resampling& resampling, SampleDepth outDepth) {
    format.width = resampling.x.outSize;
    format.height = resampling.y.outSize;
    format.depth = outDepth;
    return format;
}

/// Vertical first, so that the horizontal filter runs only on rows that come out; that one takes several rows
/// at once.
class ResampledRows final : public RowSource {
public:
    ResampledRows(RowSourcePointer input, const Resampling& resampling, const ColorProfile* profile,
                  SampleDepth outDepth)
        : RowSource(resampledFormat(input->format(), resampling, outDepth)), input_(std::move(input)),
          conversion_(input_->format(), resampling.x.outSize, outDepth, resampling.light, profile),
          columns_(ColumnFilter::create({resampling.filter, resampling.y, input_->format().height},
                                        input_->format().samplesPerRow(), kernels::rowPadding)),
          weights_(resampling.filter, resampling.x, input_->format().width),
          samples_(input_->format().bytesPerRow()), rowsLeft_(format().height) {
        const std::size_t atOnce = std::min<std::size_t>(kernels::mostRowsWeighed, rowsLeft_);
        results_.resize(atOnce, FloatRow(format().samplesPerRow() + kernels::rowPadding));
        nextResult_ = atOnce;
    }

    Result<void> readRow(std::span<std::uint8_t> row) override {
        if (nextResult_ == results_.size())
            if (Result<void> made = makeResults(); !made)
                return made;
        conversion_.toSamples(results_[nextResult_++].data(), format().width, row.data());
        return {};
    }

private:
    Result<void> makeResults() {
        results_.resize(std::min<std::size_t>(results_.size(), rowsLeft_));
        std::array<FloatRow, kernels::mostRowsWeighed> filtered;
        std::array<const float*, kernels::mostRowsWeighed> from{};
        std::array<float*, kernels::mostRowsWeighed> to{};
        for (std::size_t r = 0; r < results_.size(); ++r) {
            if (Result<void> read = readColumns(); !read)
                return read;
            filtered[r] = columns_->takeRow();
            from[r] = filtered[r].data();
            to[r] = results_[r].data();
        }
        kernels::weighRows(std::span(from).first(results_.size()), format().channels(),
                           weights_.kernelWeights(), std::span(to).first(results_.size()));
        for (std::size_t r = 0; r < results_.size(); ++r)
            columns_->giveBack(std::move(filtered[r]));
        rowsLeft_ -= results_.size();
        nextResult_ = 0;
        return {};
    }

    /// Reads what the next row of columns_ needs.
    Result<void> readColumns() {
        while (columns_->needsRow()) {
            if (Result<void> read = input_->readRow(samples_); !read)
                return read;
            conversion_.toFloats(samples_.data(), columns_->rowToFill());
            columns_->rowAdded();
        }
        return {};
    }

    const RowSourcePointer input_;
    SampleConversion conversion_;
    const std::unique_ptr<ColumnFilter> columns_;
    const FilterWeights weights_;
    Bytes samples_;
    std::size_t rowsLeft_; ///< that makeResults() has not made
    std::vector<FloatRow> results_;
    std::size_t nextResult_; ///< of results_, for readRow()
};

} // namespace

RowSourcePointer resampledRows(RowSourcePointer input, const Resampling& resampling,
                               const ColorProfile* profile, SampleDepth outDepth) {
    return std::make_unique<ResampledRows>(std::move(input), resampling, profile, outDepth);
}

} // namespace kestrine
