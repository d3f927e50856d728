#include "platform/imageio/jpeg/own/OwnRows.h"

#include "platform/imageio/jpeg/kernels/YCbCrToRGB.h"
#include "platform/imageio/jpeg/own/ComponentRows.h"

#include <algorithm>
#include <array>
#include <mutex>

namespace kestrine::jpeg {

namespace {

// Idle decoders keep their tables and buffers, and the next file on any thread reuses them. So a small file
// costs no more than its bytes, and a thread that converts many files works on memory that is in its cache.

/// The number of cores of most machines; each decoder holds a quarter of a MiB and a band.
constexpr std::size_t maxIdleDecoders = 16;

std::mutex idleMutex;
std::array<std::unique_ptr<PlaneDecoder>, maxIdleDecoders> idleDecoders; // guarded by idleMutex
std::size_t idleCount = 0;                                               // guarded by idleMutex

struct MakeIdle {
    void operator()(PlaneDecoder* decoder) const noexcept {
        std::unique_ptr<PlaneDecoder> owner(decoder);
        owner->finish();
        const std::lock_guard lock(idleMutex);
        if (idleCount < maxIdleDecoders)
            idleDecoders[idleCount++] = std::move(owner);
    }
};
/// A decoder for one file; becomes idle when it is destroyed. May move between threads.
using BorrowedDecoder = std::unique_ptr<PlaneDecoder, MakeIdle>;

/// The decoder that became idle last, or a new one.
BorrowedDecoder borrowDecoder() {
    {
        const std::lock_guard lock(idleMutex);
        if (idleCount > 0)
            return BorrowedDecoder(idleDecoders[--idleCount].release());
    }
    return BorrowedDecoder(new PlaneDecoder);
}

RowFormat formatOf(const PlaneDecoder& decoder) {
    return {decoder.width(), decoder.height(),
            decoder.planes().size() == 1 ? ColorModel::gray : ColorModel::rgb};
}

class OwnRows final : public RowSource {
public:
    OwnRows(BorrowedDecoder decoder, bool isSmoothing, std::shared_ptr<DamageRecord> damage)
        : RowSource(formatOf(*decoder)), decoder_(std::move(decoder)), damage_(std::move(damage)) {
        for (const Plane& plane : decoder_->planes()) {
            components_.emplace_back(plane.geometry(), isSmoothing);
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
        Result<void> decoded = decoder_->decodeBand();
        if (!decoded && decoded.failure().reason == Reason::malformed && damage_ != nullptr)
            damage_->note(decoded.failure());
        return decoded;
    }

    /// The number of complete rows of the picture that the decoded bands give.
    std::uint32_t readyRows() const {
        if (decoder_->decodedBands() == decoder_->bands())
            return format().height;
        return decoder_->decodedBands() * decoder_->rowsPerBand() - (crossesBands_ ? 1 : 0);
    }

    void assemble(std::uint8_t* row) {
        const std::uint8_t* samples[3] = {};
        const std::uint32_t band = decoder_->decodedBands() - 1;
        for (std::size_t c = 0; c < components_.size(); ++c)
            samples[c] = components_[c].row(decoder_->planes()[c], band, next_);
        if (components_.size() == 1)
            std::copy_n(samples[0], format().width, row);
        else
            kernels::convertYCbCrToRGB(samples[0], samples[1], samples[2], format().width, row);
    }

    const BorrowedDecoder decoder_;
    const std::shared_ptr<DamageRecord> damage_;
    std::vector<ComponentRows> components_;
    bool crossesBands_ = false;
    std::uint32_t next_ = 0, ready_ = 0;
};

} // namespace

Result<RowSourcePointer> openOwnRows(std::shared_ptr<const ByteReader> reader, const FrameHeader& header,
                                     int eighths, std::shared_ptr<DamageRecord> damage) {
    BorrowedDecoder decoder = borrowDecoder();
    TRY(decoder->start(std::move(reader), header, eighths));
    return RowSourcePointer(std::make_unique<OwnRows>(std::move(decoder), eighths > 1, std::move(damage)));
}

} // namespace kestrine::jpeg
