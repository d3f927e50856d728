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

/// Vertical first, so that the horizontal filter runs only on rows that come out; that one takes several rows
/// at once.
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
            if (Result<void> made = makeResults(); !made)
                return made;
        conversion_.toSamples(results_[nextResult_++].data(), format().width, row.data());
        return {};
    }

private:
    Result<void> makeResults() {
        const std::span<const FloatRow> filtered = TRY(filtered_->next());
        resultCount_ = filtered.size();
        std::array<const float*, kernels::mostRowsWeighed> from{};
        std::array<float*, kernels::mostRowsWeighed> to{};
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
    std::array<FloatRow, kernels::mostRowsWeighed> results_;
    std::size_t resultCount_ = 0, nextResult_ = 0; ///< of results_, for readRow()
    std::unique_ptr<FilteredRows> filtered_;       ///< may work ahead with conversion_
};

} // namespace

RowSourcePointer resampledRows(RowSourcePointer input, const Resampling& resampling,
                               const ColorProfile* profile, SampleDepth outDepth) {
    return std::make_unique<ResampledRows>(std::move(input), resampling, profile, outDepth);
}

} // namespace kestrine
