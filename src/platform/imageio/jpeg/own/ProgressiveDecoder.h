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

    /// Decodes all DC coefficients of the next band, number `band`. Returns false when a scan is damaged or
    /// unusual; the decoder cannot continue then.
    bool decodeDC(std::uint32_t band);

    /// The DC coefficients of that band.
    DCBand& dcBand(std::size_t component) { return dcBands_[component]; }

    /// Decodes the AC coefficients of the next `count` blocks of a component into the first ones of the
    /// strip, which must be clear. Returns false as decodeDC() does.
    bool decodeAC(std::size_t component, std::uint32_t count);

    BlockStrip& strip() { return strip_; }

    /// Whether all scans end here as they should.
    bool isAtEnd();

private:
    std::array<DCBand, 3> dcBands_;
    BlockStrip strip_;
    std::vector<std::unique_ptr<ProgressiveScan>> dcScans_;
    std::array<std::vector<std::unique_ptr<ProgressiveScan>>, 3> acScans_; ///< by component
};

} // namespace kestrine::jpeg
