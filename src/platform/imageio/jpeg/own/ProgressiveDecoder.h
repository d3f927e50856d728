// ProgressiveDecoder: decodes the scans of a progressive JPEG side by side, so that only the coefficients of
// one band are in memory.
#pragma once

#include "platform/imageio/jpeg/own/ProgressiveScan.h"

namespace kestrine::jpeg {

class ProgressiveDecoder {
public:
    /// Goes to the starts of all scans. `wantsAC` states for each component whether its AC coefficients will
    /// be used; all others stay 0. Fails with reason "refused" when the scans are unusual.
    Result<void> start(std::shared_ptr<const ByteReader> reader, const FrameHeader& header,
                       const std::array<bool, 3>& wantsAC);

    /// Decodes the next band, number `band`. The coefficients of the band before must have been cleared.
    /// Returns false when a scan is damaged or unusual; the decoder cannot continue then.
    bool decodeBand(std::uint32_t band);

    BandCoefficients& coefficients(std::size_t component) { return components_[component]; }

private:
    std::uint32_t bands_ = 0;
    std::array<BandCoefficients, 3> components_;
    std::vector<std::unique_ptr<ProgressiveScan>> scans_;
};

} // namespace kestrine::jpeg
