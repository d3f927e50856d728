#include "platform/imageio/jpeg/own/OwnRows.h"

#include "platform/imageio/jpeg/kernels/YCbCrToRGB.h"
#include "platform/imageio/jpeg/own/BandSource.h"
#include "platform/imageio/jpeg/own/ComponentRows.h"

#include <algorithm>
#include <vector>

namespace kestrine::jpeg {

namespace {

RowFormat formatOf(const FrameHeader& header, int eighths) {
    return {reducedSide(header.width, eighths), reducedSide(header.height, eighths),
            header.componentCount == 1 ? ColorModel::gray : ColorModel::rgb};
}

class OwnRows final : public RowSource {
public:
    OwnRows(std::unique_ptr<BandSource> bands, const FrameHeader& header, int eighths,
            std::shared_ptr<DamageRecord> damage)
        : RowSource(formatOf(header, eighths)), bands_(std::move(bands)), damage_(std::move(damage)),
          bandCount_(header.mcusDown()),
          rowsPerBand_(static_cast<std::uint32_t>(header.verticalFactor() * eighths)) {
        for (std::size_t c = 0; c < header.componentCount; ++c) {
            components_.emplace_back(planeGeometry(header, c, eighths), eighths > 1);
            crossesBands_ = crossesBands_ || components_.back().crossesBands();
        }
    }

    Result<void> readRow(std::span<std::uint8_t> row) override {
        if (next_ >= ready_) {
            TRY(decodeBand());
            ready_ = readyRows();
        }
        assemble(row.data());
        ++next_;
        return {};
    }

private:
    Result<void> decodeBand() {
        Result<const SampleBand*> decoded = bands_->next();
        if (!decoded && decoded.failure().reason == Reason::malformed && damage_ != nullptr)
            damage_->note(decoded.failure());
        band_ = TRY(std::move(decoded));
        ++decodedBands_;
        return {};
    }

    /// The number of complete rows of the picture that the decoded bands give.
    std::uint32_t readyRows() const {
        if (decodedBands_ == bandCount_)
            return format().height;
        return decodedBands_ * rowsPerBand_ - (crossesBands_ ? 1 : 0);
    }

    void assemble(std::uint8_t* row) {
        const std::uint8_t* samples[3] = {};
        for (std::size_t c = 0; c < components_.size(); ++c)
            samples[c] = components_[c].row(band_->storage[c], decodedBands_ - 1, next_);
        if (components_.size() == 1)
            std::copy_n(samples[0], format().width, row);
        else
            kernels::convertYCbCrToRGB(samples[0], samples[1], samples[2], format().width, row);
    }

    const std::unique_ptr<BandSource> bands_;
    const std::shared_ptr<DamageRecord> damage_;
    const std::uint32_t bandCount_, rowsPerBand_;
    const SampleBand* band_ = nullptr; ///< the last one decoded
    std::uint32_t decodedBands_ = 0;
    std::vector<ComponentRows> components_;
    bool crossesBands_ = false;
    std::uint32_t next_ = 0, ready_ = 0;
};

} // namespace

Result<RowSourcePointer> openOwnRows(std::shared_ptr<const ByteReader> reader, const FrameHeader& header,
                                     int eighths, std::shared_ptr<DamageRecord> damage) {
    std::unique_ptr<BandSource> bands = TRY(openBands(std::move(reader), header, eighths));
    return RowSourcePointer(std::make_unique<OwnRows>(std::move(bands), header, eighths, std::move(damage)));
}

} // namespace kestrine::jpeg
