#include "platform/imageio/jpeg/own/BandSource.h"

#include "platform/imageio/jpeg/own/BandsAhead.h"
#include "platform/imageio/jpeg/own/IdleDecoders.h"

namespace kestrine::jpeg {

namespace {

/// Decodes a band when it is needed.
class BandsHere final : public BandSource {
public:
    explicit BandsHere(BorrowedDecoder decoder) : decoder_(std::move(decoder)) {
        decoder_->planes.prepare(decoder_->band);
    }

    Result<const SampleBand*> next() override {
        for (Plane& plane : decoder_->band.planes())
            plane.setRowBefore(plane.lastRow());
        TRY(decoder_->planes.decodeBand(decoder_->band));
        return &decoder_->band;
    }

private:
    const BorrowedDecoder decoder_;
};

} // namespace

Result<std::unique_ptr<BandSource>> openBands(std::shared_ptr<const ByteReader> reader,
                                              const FrameHeader& header, int eighths) {
    if (auto ahead = TRY(openBandsAhead(reader, header, eighths)))
        return ahead;
    BorrowedDecoder decoder = borrowDecoder();
    TRY(decoder->planes.start(std::move(reader), header, eighths));
    return std::unique_ptr<BandSource>(std::make_unique<BandsHere>(std::move(decoder)));
}

} // namespace kestrine::jpeg
