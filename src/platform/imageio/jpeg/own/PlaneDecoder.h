// PlaneDecoder: decodes a JPEG into planes of samples as they are stored (grey, or Y, Cb and Cr),
// one band at a time. A band is a row of MCUs, so that its samples are still in the cache when they are used.
#pragma once

#include "platform/imageio/jpeg/own/EntropyDecoder.h"
#include "platform/imageio/jpeg/own/ProgressiveDecoder.h"
#include "platform/imageio/jpeg/own/SampleBand.h"

namespace kestrine::jpeg {

/// Decodes the files that frameHeaderOf() accepts. Fails with reason "refused" where the scan is damaged or
/// unusual; the bands decoded before equal those of libjpeg-turbo (OwnRows.h explains why). Can be
/// started any number of times, for different files.
class PlaneDecoder {
public:
    /// Prepares for the first band of the file that has this header. `eighths` is 8, 4, 2 or 1.
    Result<void> start(std::shared_ptr<const ByteReader> reader, const FrameHeader& header, int eighths);

    /// Makes room for a band of this file.
    void prepare(SampleBand& band) const;

    /// Decodes the next band into `band`, except for the row before it. To be called once for each of the
    /// bands() of the file that is not skipped.
    Result<void> decodeBand(SampleBand& band);

    /// Goes to the end of the last band that was decoded, which must be followed by a restart marker. The
    /// sequential file has a restart marker there, and bands remain. Fails like decodeBand().
    Result<void> endAtRestart();

    /// Passes over the next `count` bands, before and after which the sequential file has a restart marker
    /// (or the start of the scan). Fails like decodeBand() if markers are missing or unusual.
    Result<void> skipBands(std::uint32_t count);

    /// Releases the file; keeps the memory for the next one.
    void finish();

private:
    Result<void> decodeSequential(SampleBand& band);
    Result<void> decodeProgressive(SampleBand& band);
    void transformGroup(SampleBand& band, std::uint32_t firstMCU);
    bool decodeRow(Plane& plane, std::size_t component, std::uint32_t row);
    void transformStrip(Plane& plane, std::size_t component, std::uint32_t row, std::uint32_t firstGroup);

    FrameHeader header_;
    int eighths_ = 8;
    std::uint32_t mcusAcross_ = 0, bands_ = 0, decodedBands_ = 0;
    EntropyDecoder entropy_;
    std::unique_ptr<ProgressiveDecoder> progressive_; ///< null unless the file is progressive
};

} // namespace kestrine::jpeg
