// ProgressiveScan: decodes one scan of a progressive JPEG, one band at a time, so that all scans of a file
// can be decoded side by side.
#pragma once

#include "platform/imageio/jpeg/own/BandCoefficients.h"
#include "platform/imageio/jpeg/own/RestartCounter.h"
#include "platform/imageio/jpeg/own/ScanBytes.h"
#include "platform/imageio/jpeg/own/ScanList.h"

namespace kestrine::jpeg {

class ProgressiveScan {
public:
    /// `mcusAcross` is the number of MCUs in a row if the scan has several components. `storesAC` is false if
    /// no coefficient of this scan, which is one of AC coefficients, will be used.
    ProgressiveScan(const Scan& scan, std::uint32_t mcusAcross, bool storesAC);

    /// Goes to the start of the scan. Returns false when a Huffman code cannot be used.
    bool start(std::shared_ptr<const ByteReader> reader);

    /// Decodes the next band, number `band`. `components` are those of the frame; the bands of the scans
    /// before this one have been decoded into them. Returns false when the scan is damaged or unusual.
    bool decodeBand(std::uint32_t band, std::span<BandCoefficients> components);

    /// Whether the scan ends after the last band as it should.
    bool isAtEnd() { return bytes_.isAtEnd(reservoir_); }

private:
    /// A part of a row: MCUs, or blocks if the scan has one component.
    struct Run {
        std::uint32_t row, first, count;
    };

    bool decodeRow(std::uint32_t row, std::uint32_t count);
    bool passRestart();
    bool decodeRun(const Run& run);
    template <class Decode>
    bool decodeDC(const Run& run, const Decode& decode);
    bool decodeFirstDC(const Run& run);
    bool refineDC(const Run& run);
    template <bool stores>
    bool decodeFirstAC(const Run& run);
    template <bool stores>
    bool refineAC(const Run& run);

    bool mayDecode(Reservoir& reservoir);

    const Scan scan_;
    const std::uint32_t mcusAcross_;
    const bool storesAC_;
    std::vector<DCTable> dcTables_;                 ///< by number of the component in the scan
    std::vector<BandTable> acTable_;                ///< one or none
    std::array<BandCoefficients*, 3> components_{}; ///< of the scan, while a band is decoded
    ScanBytes bytes_;
    Reservoir reservoir_{nullptr};
    RestartCounter restarts_;
    std::array<int, 3> predictors_{};
    std::uint32_t endedBlocks_ = 0; ///< the next blocks have no more symbols
};

} // namespace kestrine::jpeg
