#include "platform/imageio/jpeg/own/BandsAhead.h"

#include "platform/coregraphics/RowsAhead.h"
#include "platform/coregraphics/SlotRing.h"
#include "platform/imageio/jpeg/own/IdleDecoders.h"

#include <numeric>
#include <vector>

namespace kestrine::jpeg {

namespace {

/// Turns that are decoded or being decoded at a time, for each decoder.
constexpr std::uint32_t slotsPerDecoder = 4;
/// Handing over fewer would take longer than decoding them.
constexpr std::uint32_t minRowsPerTurn = 8;
/// Keeps the memory small, since a decoder has slotsPerDecoder times as many bands.
constexpr std::uint32_t maxBandsToRestart = 4;

/// How the bands are cut into turns of a few bands. With restart markers, each turn begins at the start of
/// the scan or after a marker, so turns are decoded independently. Without them, a turn is decoded after the
/// one before.
struct Turns {
    bool areIndependent = false;
    std::uint32_t bands = 1; ///< in all turns but the last
    std::uint32_t bandsOfPicture = 1;

    std::uint32_t count() const { return (bandsOfPicture + bands - 1) / bands; }
    std::uint32_t bandsOf(std::uint32_t turn) const { return std::min(bands, bandsOfPicture - turn * bands); }
};

Turns turnsOf(const FrameHeader& header, int eighths) {
    const auto rowsPerBand = static_cast<std::uint32_t>(header.verticalFactor() * eighths);
    const std::uint32_t bands = (minRowsPerTurn + rowsPerBand - 1) / rowsPerBand;
    if (header.restartInterval != 0 && !header.isProgressive) {
        const std::uint32_t bandsToRestart =
            header.restartInterval / std::gcd(header.restartInterval, header.mcusAcross());
        if (bandsToRestart <= maxBandsToRestart)
            return {true, (bands + bandsToRestart - 1) / bandsToRestart * bandsToRestart, header.mcusDown()};
    }
    return {false, bands, header.mcusDown()};
}

/// Decodes turns in ascending order; if they are independent, not each of them.
class TurnDecoder {
public:
    TurnDecoder(BorrowedDecoder decoder, const Turns& turns) : decoder_(std::move(decoder)), turns_(turns) {}

    void prepare(SampleBand& band) const { decoder_->planes.prepare(band); }

    Result<void> decode(std::uint32_t turn, std::span<SampleBand> bands) {
        if (turn > position_)
            TRY(decoder_->planes.skipBands((turn - position_) * turns_.bands));
        position_ = turn + 1;
        const std::uint32_t count = turns_.bandsOf(turn);
        for (SampleBand& band : bands.first(count))
            TRY(decoder_->planes.decodeBand(band));
        const bool isAtRestart = turns_.areIndependent && position_ < turns_.count();
        return isAtRestart ? decoder_->planes.endAtRestart() : Result<void>();
    }

private:
    BorrowedDecoder decoder_;
    Turns turns_;
    std::uint32_t position_ = 0; ///< the turn before which the decoder stands
};

struct Slot {
    std::vector<SampleBand> bands;
    Interruption interruption; ///< instead of the bands
    TurnDecoder* decoder = nullptr;
    bool isDone = false;
};

/// Every thread of the crew may take the next turn that nobody has taken, if a decoder is idle.
class BandsAhead final : public BandSource, private Crew::Task {
public:
    BandsAhead(std::shared_ptr<Crew> crew, std::vector<TurnDecoder> decoders, const Turns& turns)
        : crew_(std::move(crew)), turns_(turns), decoders_(std::move(decoders)),
          slots_(decoders_.size() * slotsPerDecoder) {
        for (Slot& slot : slots_) {
            slot.bands.resize(turns_.bands);
            for (SampleBand& band : slot.bands)
                decoders_.front().prepare(band);
        }
        for (TurnDecoder& decoder : decoders_)
            idle_.push_back(&decoder);
        crew_->add(*this);
    }
    ~BandsAhead() override { crew_->remove(*this); }
    BandsAhead(const BandsAhead&) = delete;
    BandsAhead& operator=(const BandsAhead&) = delete;

    Result<const SampleBand*> next() override {
        if (band_ != nullptr)
            keepLastRows();
        if (band_ == nullptr || ++bandOfTurn_ == turns_.bands) {
            const Slot& slot = nextTurn();
            if (slot.interruption)
                return slot.interruption.passOn();
            bandOfTurn_ = 0;
        }
        const bool isFirst = band_ == nullptr;
        band_ = &slotOf(used_).bands[bandOfTurn_];
        if (!isFirst)
            for (std::size_t c = 0; c < band_->componentCount; ++c)
                band_->storage[c].setRowBefore(lastRows_[c]);
        return band_;
    }

private:
    Slot& slotOf(std::size_t turn) { return slots_[turn % slots_.size()]; }

    /// The last band's memory may be used again when the next one is taken.
    void keepLastRows() {
        for (std::size_t c = 0; c < band_->componentCount; ++c) {
            const auto row = band_->storage[c].lastRow();
            lastRows_[c].assign(row.begin(), row.end());
        }
    }

    /// Releases the turn in use, and returns the next one when it is decoded.
    const Slot& nextTurn() {
        Crew::Lock lock = crew_->lock();
        if (band_ != nullptr) {
            slotOf(used_++).isDone = false;
            if (taken_ - used_ == slots_.size() / 2) // waking threads for each turn would take longer
                crew_->notify();
        }
        crew_->workUntil(lock, *this, [this] { return slotOf(used_).isDone; });
        return slotOf(used_);
    }

    bool isReady() const override {
        return !hasFailed_ && !idle_.empty() && taken_ < turns_.count() && taken_ - used_ < slots_.size();
    }
    std::size_t begin() override {
        slotOf(taken_).decoder = idle_.back();
        idle_.pop_back();
        return taken_++;
    }
    void work(std::size_t turn) override {
        Slot& slot = slotOf(turn);
        slot.interruption.during(
            [&] { return slot.decoder->decode(static_cast<std::uint32_t>(turn), slot.bands); });
    }
    void end(std::size_t turn) override {
        Slot& slot = slotOf(turn);
        idle_.push_back(slot.decoder);
        hasFailed_ = hasFailed_ || slot.interruption;
        slot.isDone = true;
    }

    const std::shared_ptr<Crew> crew_;
    const Turns turns_;
    std::vector<TurnDecoder> decoders_;
    std::vector<Slot> slots_;

    // Guarded by the crew's lock, like Slot::isDone.
    std::vector<TurnDecoder*> idle_;
    std::uint32_t taken_ = 0; ///< turns that a thread has begun to decode
    std::uint32_t used_ = 0;  ///< the turn in use, or to be used next
    bool hasFailed_ = false;  ///< so that no later turn is needed, nor can its decoder continue

    SampleBand* band_ = nullptr; ///< the last one
    std::uint32_t bandOfTurn_ = 0;
    std::array<Bytes, 3> lastRows_;
};

} // namespace

Result<std::unique_ptr<BandSource>> openBandsAhead(const std::shared_ptr<const ByteReader>& reader,
                                                   const FrameHeader& header, int eighths) {
    std::shared_ptr<Crew> crew =
        crewFor({reducedSide(header.width, eighths), reducedSide(header.height, eighths), ColorModel::rgb});
    if (crew == nullptr)
        return std::unique_ptr<BandSource>();
    const Turns turns = turnsOf(header, eighths);
    const std::size_t count = turns.areIndependent ? crew->threads() : 1;
    std::vector<TurnDecoder> decoders;
    while (decoders.size() < count) {
        BorrowedDecoder decoder = borrowDecoder();
        TRY(decoder->planes.start(reader, header, eighths));
        decoders.emplace_back(std::move(decoder), turns);
    }
    return std::unique_ptr<BandSource>(
        std::make_unique<BandsAhead>(std::move(crew), std::move(decoders), turns));
}

} // namespace kestrine::jpeg
