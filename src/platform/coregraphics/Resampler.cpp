#include "platform/coregraphics/Resampler.h"

#include "platform/coregraphics/FilteredRows.h"
#include "platform/coregraphics/kernels/ResampleRows.h"

#include <array>

namespace kestrine {

namespace {

RowFormat resampledFormat(RowFormat format, const Resampling& resampling, SampleDepth outDepth) {
    format.width = resampling.x.outSize;
    format.height = resampling.y.outSize;
    format.depth = outDepth;
    return format;
}

/// Filters vertically first, so that the horizontal filter handles only rows of the result, several at once.
class ResampledRows final : public RowSource {
public:
    ResampledRows(RowSourcePointer input, const Resampling& resampling, const ColorProfile* profile,
                  SampleDepth outDepth)
        : RowSource(resampledFormat(input->format(), resampling, outDepth)),
          conversion_(input->format(), resampling.x.outSize, outDepth, resampling.light, profile),
          weights_(resampling.filter, resampling.x, input->format().width) {
        FilterWeights vertical(resampling.filter, resampling.y, input->format().height);
        for (FloatRow& result : results_)
            result.resize(format().samplesPerRow() + kernels::rowPadding);
        filtered_ = FilteredRows::create(std::move(input), conversion_, std::move(vertical));
    }

    Result<void> readRow(std::span<std::uint8_t> row) override {
        if (nextResult_ == resultCount_)
            TRY(makeResults());
        conversion_.toSamples(results_[nextResult_++].data(), format().width, row.data());
        return {};
    }

private:
    Result<void> makeResults() {
        const std::span<const FloatRow> filtered = TRY(filtered_->next());
        resultCount_ = filtered.size();
        std::array<const float*, kernels::maxRowsWeighed> from{};
        std::array<float*, kernels::maxRowsWeighed> to{};
        for (std::size_t r = 0; r < resultCount_; ++r) {
            from[r] = filtered[r].data();
            to[r] = results_[r].data();
        }
        kernels::weighRows(std::span(from).first(resultCount_), format().channels(), weights_.kernelWeights(),
                           std::span(to).first(resultCount_));
        nextResult_ = 0;
        return {};
    }

    SampleConversion conversion_;
    const FilterWeights weights_;
    std::array<FloatRow, kernels::maxRowsWeighed> results_;
    std::size_t resultCount_ = 0, nextResult_ = 0; ///< rows in results_, and delivered ones
    std::unique_ptr<FilteredRows> filtered_;       ///< may use conversion_ on another thread
};

} // namespace

RowSourcePointer resampledRows(RowSourcePointer input, const Resampling& resampling,
                               const ColorProfile* profile, SampleDepth outDepth) {
    return std::make_unique<ResampledRows>(std::move(input), resampling, profile, outDepth);
}

} // namespace kestrine
