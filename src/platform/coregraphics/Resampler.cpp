#include "platform/coregraphics/Resampler.h"

#include "platform/coregraphics/ColumnFilter.h"
#include "platform/coregraphics/kernels/ResampleRows.h"

namespace kestrine {

namespace {

RowFormat resampledFormat(RowFormat format, const Resampling& resampling, SampleDepth outDepth) {
    format.width = resampling.x.outSize;
    format.height = resampling.y.outSize;
    format.depth = outDepth;
    return format;
}

/// Vertical first, so that the horizontal filter runs only on rows that come out.
class ResampledRows final : public RowSource {
public:
    ResampledRows(RowSourcePointer input, const Resampling& resampling, const ColorProfile* profile,
                  SampleDepth outDepth)
        : RowSource(resampledFormat(input->format(), resampling, outDepth)), input_(std::move(input)),
          conversion_(input_->format(), resampling.x.outSize, outDepth, resampling.light, profile),
          columns_(ColumnFilter::create({resampling.filter, resampling.y, input_->format().height},
                                        input_->format().samplesPerRow(), kernels::rowPadding)),
          weights_(resampling.filter, resampling.x, input_->format().width),
          samples_(input_->format().bytesPerRow()), result_(format().samplesPerRow() + kernels::rowPadding) {}

    Result<void> readRow(std::span<std::uint8_t> row) override {
        while (columns_->needsRow()) {
            if (Result<void> read = input_->readRow(samples_); !read)
                return read;
            conversion_.toFloats(samples_.data(), columns_->rowToFill());
            columns_->rowAdded();
        }
        kernels::weighPixels(columns_->nextRow().data(), format().channels(), weights_.kernelWeights(),
                             result_.data());
        conversion_.toSamples(result_.data(), format().width, row.data());
        return {};
    }

private:
    const RowSourcePointer input_;
    SampleConversion conversion_;
    const std::unique_ptr<ColumnFilter> columns_;
    const FilterWeights weights_;
    Bytes samples_;
    FloatRow result_;
};

} // namespace

RowSourcePointer resampledRows(RowSourcePointer input, const Resampling& resampling,
                               const ColorProfile* profile, SampleDepth outDepth) {
    return std::make_unique<ResampledRows>(std::move(input), resampling, profile, outDepth);
}

} // namespace kestrine
